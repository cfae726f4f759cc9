#include "inventory/report/page_style.h"

namespace NINVENTORY {
namespace {

// Update styleDigest with the sheet: PageStyle.DigestIsThatOfTheSheet prints the new one.
constexpr std::string_view styleDigest = "N0TWBT+vdvFxlm5qSXcKKJ00MnGQs471pNrFw/af+eM=";

constexpr std::string_view styleSheet = R"css(
:root {
  color-scheme: light dark;
  --page: #ffffff; --panel: #f3f5f4; --rule: #c9d0ce; --edge: #6b7775; --ink: #141a1a; --quiet: #4c5856;
  --accent: #0a5f66; --full: #2f8f97; --part: #bfe0e0; --other: #8a3b00; --other-fill: #ffe3cc;
}
@media (prefers-color-scheme: dark) {
  :root {
    --page: #111515; --panel: #1b2121; --rule: #3a4443; --edge: #84908e; --ink: #eaf0ef; --quiet: #aab6b4;
    --accent: #7cd0d6; --full: #3f9aa1; --part: #1f4a4e; --other: #ffb27d; --other-fill: #4a2a12;
  }
}
* { box-sizing: border-box; }
html { font-size: 100%; -webkit-text-size-adjust: 100%; }
body {
  margin: 0; background: var(--page); color: var(--ink); overflow-wrap: anywhere;
  font: 1rem/1.45 system-ui, "Segoe UI", Roboto, "Noto Sans", "Liberation Sans", "DejaVu Sans", sans-serif;
  font-variant-numeric: tabular-nums;
}
article, .frame { max-width: 84rem; margin: 0 auto; padding: 1.25rem clamp(0.75rem, 3vw, 2.5rem); }
h1 { font-size: clamp(1.75rem, 1.3rem + 2vw, 2.5rem); line-height: 1.1; margin: 0; font-weight: 700; }
h2 { font-size: 1.375rem; line-height: 1.2; margin: 0 0 0.5rem; font-weight: 700; }
h3 { font-size: 1rem; line-height: 1.3; margin: 1.25rem 0 0.25rem; font-weight: 700; }
p { margin: 0 0 0.5rem; max-width: 46rem; }
a { color: var(--accent); }
code { font: 0.875em/1.4 ui-monospace, "Cascadia Mono", Menlo, Consolas, "Liberation Mono", monospace; }
:focus-visible { outline: 3px solid var(--accent); outline-offset: 2px; }
.skip { position: absolute; left: -100rem; }
.skip:focus { left: 0.5rem; top: 0.5rem; padding: 0.5rem 0.75rem; background: var(--page); z-index: 1; }
.quiet, caption, figcaption, dt { color: var(--quiet); }
.unknown { color: var(--quiet); font-style: italic; }
.other { color: var(--other); font-weight: 700; }
section { margin-top: 2.25rem; padding-top: 0.75rem; border-top: 2px solid var(--rule); }
figure { margin: 0; }
dl, dd { margin: 0; }
ul, ol { margin: 0; padding: 0; }
svg { display: block; max-width: 100%; height: auto; }
svg text { fill: var(--ink); font: 10px system-ui, "Segoe UI", Roboto, "Liberation Sans", "DejaVu Sans", sans-serif; }
@media (forced-colors: active) { svg text { fill: CanvasText; } }

.lead { font-size: 1.125rem; margin-top: 0.25rem; }
.facts { display: grid; grid-template-columns: max-content minmax(0, 1fr); gap: 0.125rem 1rem; margin-top: 0.75rem; }
.strip { display: grid; grid-template-columns: repeat(auto-fit, minmax(min(100%, 8.5rem), 1fr)); gap: 0.5rem; margin-top: 1.25rem; }
.strip > div { background: var(--panel); border-top: 3px solid var(--full); padding: 0.5rem 0.75rem; }
.strip b { display: block; font-size: 1.5rem; line-height: 1.2; }
.strip span { display: block; font-size: 0.875rem; color: var(--quiet); }
.notes { margin-top: 1.25rem; padding: 0.625rem 0.875rem; border-left: 0.375rem solid var(--other); background: var(--panel); }
.notes h2 { font-size: 1rem; }
.notes ul { padding-left: 1.125rem; }
.contents { margin-top: 1rem; }
.contents ul { list-style: none; display: flex; flex-wrap: wrap; gap: 0 1.25rem; }
.contents a { display: inline-block; padding: 0.25rem 0; }

.board { display: grid; gap: 1.5rem 3rem; grid-template-columns: repeat(auto-fit, minmax(min(100%, 18rem), 1fr)); }
.board svg { width: 100%; max-width: 30rem; }
.board figcaption { margin-top: 0.5rem; color: inherit; }
.chip { fill: var(--panel); stroke: var(--ink); stroke-width: 1.5; }
.name { font-weight: 700; }
.hole { fill: none; stroke: var(--edge); stroke-dasharray: 3 3; }
.case { fill: none; stroke: var(--accent); }
.size { fill: var(--part); }
svg .soft { fill: var(--quiet); }
.differs { stroke: var(--other); stroke-width: 3; }
svg .mark { fill: var(--other); font-weight: 700; font-size: 13px; }
.slots { padding-left: 2rem; font-size: 0.875rem; }
@media (min-width: 40rem) { .slots { columns: 2; column-gap: 2.5rem; } .slots li { break-inside: avoid; } }
.slots li::marker { color: var(--quiet); }

.extents { list-style: none; }
.extents > li { padding: 0.5rem 0; border-bottom: 1px solid var(--rule); }
.extents p, .connectors div { max-width: none; margin: 0; }
.bar { width: 100%; height: 1.25rem; margin: 0.25rem 0; }
.part { fill: var(--part); stroke: var(--accent); vector-effect: non-scaling-stroke; }
.bar .hole, .edge { vector-effect: non-scaling-stroke; }
.edge { fill: none; stroke: var(--accent); stroke-width: 1.5; }
.parts { padding-left: 1.75rem; font-size: 0.875rem; }
@media (min-width: 64rem) { .extents { display: grid; grid-template-columns: repeat(2, minmax(0, 1fr)); gap: 0 3rem; } }

.connectors { list-style: none; }
.connectors li { padding: 0.375rem 0; border-bottom: 1px solid var(--rule); }
.connectors svg { margin-top: 0.25rem; width: 13rem; }
.connectors .filled { fill: var(--full); }

.ports { list-style: none; }
.ports > li { padding: 0.375rem 0; border-bottom: 1px solid var(--rule); }

.tree, .tree ul { list-style: none; }
.tree ul { margin-left: 0.5rem; border-left: 1px solid var(--edge); }
.tree ul > li { padding-left: 0.875rem; }
.tree li { padding-top: 0.125rem; padding-bottom: 0.125rem; }

table { border-collapse: collapse; min-width: min(100%, 44rem); }
caption { text-align: left; padding-bottom: 0.25rem; font-size: 0.875rem; }
th, td { text-align: left; vertical-align: top; padding: 0.25rem 1rem 0.25rem 0; border-bottom: 1px solid var(--rule); }
thead th { font-size: 0.875rem; font-weight: 400; color: var(--quiet); vertical-align: bottom; border-bottom-color: var(--edge); }
tbody th { font-weight: 700; }
thead th, td[data-title="change"] { overflow-wrap: normal; }
details { margin-top: 0.5rem; }
summary { cursor: pointer; color: var(--accent); }
details details { margin-left: 1rem; }
details dl { display: grid; grid-template-columns: minmax(8rem, max-content) minmax(0, 1fr); gap: 0 1rem; margin: 0.25rem 0 0.75rem 1rem; font-size: 0.875rem; }
@media screen and (max-width: 48rem) {
  table, tbody, tr, caption { display: block; min-width: 0; }
  thead { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
  tr { padding: 0.375rem 0; border-bottom: 1px solid var(--rule); }
  th, td { display: block; border: 0; padding: 0 0 0 0.75rem; }
  tbody th { padding-left: 0; }
  td { display: grid; grid-template-columns: 7rem minmax(0, 1fr); gap: 0.5rem; }
  td::before { content: attr(data-title); color: var(--quiet); }
  details dl { grid-template-columns: minmax(0, 1fr); }
  details dd { padding-left: 0.75rem; }
}
@media (max-width: 30rem) { .facts { grid-template-columns: minmax(0, 1fr); } }
@media (min-width: 110rem) { html { font-size: 125%; } }

@page { size: A4; margin: 14mm 12mm; }
@media print {
  :root {
    color-scheme: light;
    --page: #ffffff; --panel: #ffffff; --rule: #b5b5b5; --edge: #444444; --ink: #000000; --quiet: #333333;
    --accent: #0a4a50; --full: #6fb3b8; --part: #d5ebeb; --other: #6b2d00; --other-fill: #ffe9d8;
  }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  html { font-size: 75%; }
  article, .frame { padding: 0; max-width: none; }
  .skip, .contents, details { display: none; }
  h2, h3, caption { break-after: avoid; }
  tr, figure, .strip, .notes { break-inside: avoid; }
  thead { display: table-header-group; }
}
)css";

}  // namespace

std::string_view GetStyleSheet() {
    return styleSheet;
}

std::string_view GetStyleDigest() {
    return styleDigest;
}

}  // namespace NINVENTORY
