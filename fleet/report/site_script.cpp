#include "fleet/report/site_script.h"

namespace NFLEET {
namespace {

// Update scriptDigest with the script: SiteTexts.DigestsAreThoseOfTheTexts prints the new one.
constexpr std::string_view scriptDigest = "tXjhhTnAEytNzJKgD+FizpLiuXzR3FXq7wrljRVQ2cY=";

// The pages are XML, so the script has neither of the characters that begin markup there.
constexpr std::string_view siteScript = R"js(
"use strict";
const normalize = text => text.toLowerCase().replace(/[ \-:._\/]/g, "");
const getWords = text => text.toLowerCase().split(/\s+/).filter(word => word);
const count = (number, one, many) => number + " " + (number === 1 ? one : many);

// Lists of machines: show those with some words, in the order of a column.
for (const tools of document.querySelectorAll(".tools")) {
  const table = tools.nextElementSibling;
  const body = table.tBodies[0];
  const rows = Array.from(body.rows);
  const texts = rows.map(row => Array.from(row.cells, cell => cell.textContent).join(" ").toLowerCase());
  const find = tools.querySelector("input");
  const order = tools.querySelector("select");
  const shown = tools.querySelector("p");
  const filter = () => {
    const words = getWords(find.value);
    let hits = 0;
    rows.forEach((row, i) => {
      const isHit = words.every(word => texts[i].includes(word));
      row.hidden = !isHit;
      hits += isHit ? 1 : 0;
    });
    shown.textContent = hits + " of " + count(rows.length, "machine", "machines");
  };
  // Numbers are in descending order, because more of them is what people look for.
  const compare = (left, right) => {
    const cells = [left.cells[order.value], right.cells[order.value]];
    if (cells[0].dataset.order !== undefined) return cells[1].dataset.order - cells[0].dataset.order;
    const [x, y] = cells.map(cell => cell.textContent.toLowerCase());
    return x > y ? 1 : y > x ? -1 : 0;
  };
  Array.from(table.tHead.rows[0].cells).forEach((cell, i) => order.add(new Option(cell.textContent, i)));
  find.addEventListener("input", filter);
  order.addEventListener("change", () => body.append(...rows.slice().sort(compare)));
  filter();
  tools.hidden = false;
}

// The search box: here if this page has the results, else on the page of the search.
const box = document.querySelector(".search");
const results = document.getElementById("results");
const getQuery = () => {
  if (!location.hash.startsWith("#q=")) return "";
  try {
    return decodeURIComponent(location.hash.slice(3));
  } catch {
    return "";
  }
};
if (box) {
  box.hidden = false;
  const input = box.querySelector("input");
  let search = () => null;
  if (results) {
    const maxShown = 50;
    const machines = Array.from(document.querySelectorAll("#all-machines > li"));
    const texts = machines.map(item => item.textContent.toLowerCase());
    const pages = Array.from(document.querySelectorAll("#part-pages > li"));
    const linkTo = (page, query) => {
      const link = page.querySelector("a").cloneNode(true);
      link.href = link.getAttribute("href") + "#q=" + encodeURIComponent(query);
      return link;
    };
    search = () => {
      const query = input.value.trim();
      const words = getWords(query);
      const start = normalize(query);
      results.hidden = words.length === 0;
      if (results.hidden) return null;
      const hits = machines.filter((item, i) => words.every(word => texts[i].includes(word)));
      const holders = pages.filter(page => !(page.dataset.first > start + "\uffff" || start > page.dataset.last));
      document.getElementById("found").textContent = count(hits.length, "machine", "machines") +
        (hits.length > maxShown ? ", of which " + maxShown + " are shown" : "");
      document.getElementById("machines-found").replaceChildren(
        ...hits.slice(0, maxShown).map(item => item.cloneNode(true)));
      const parts = document.getElementById("parts-found");
      parts.replaceChildren(holders.length === 0 ? "No serial number or address begins like this."
        : "Serial numbers and addresses that begin like this would be in: ");
      holders.slice(0, 5).forEach(page => parts.append(linkTo(page, query), " "));
      const found = hits.length === 1 ? hits[0].querySelector("a").href
        : hits.length === 0 ? (holders.length > 0 ? linkTo(holders[0], query).href : null) : null;
      return found;
    };
    input.addEventListener("input", search);
    const start = () => {
      input.value = getQuery() || input.value;
      search();
    };
    addEventListener("hashchange", start);
    start();
  } else {
    search = () => "search.html#q=" + encodeURIComponent(input.value.trim());
  }
  input.addEventListener("keydown", event => {
    const target = event.key === "Enter" ? search() : null;
    if (target) location.href = target;
  });
}

// A page of serial numbers: marks those that begin like the search, and goes to the first one.
const status = document.querySelector(".found");
if (status) {
  const mark = () => {
    const start = normalize(getQuery());
    const rows = Array.from(document.querySelectorAll("tr[data-key]"));
    const hits = rows.filter(row => start ? row.dataset.key.startsWith(start) : false);
    for (const row of rows) row.classList.toggle("hit", hits.includes(row));
    status.textContent = start ? count(hits.length, "line begins", "lines begin") + " with " + getQuery() : "";
    if (hits.length > 0) hits[0].scrollIntoView({block: "center"});
  };
  addEventListener("hashchange", mark);
  mark();
}
)js";

}  // namespace

std::string_view GetSiteScript() {
    return siteScript;
}

std::string_view GetSiteScriptDigest() {
    return scriptDigest;
}

}  // namespace NFLEET
