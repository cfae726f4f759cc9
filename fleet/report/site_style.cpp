#include "fleet/report/site_style.h"

namespace NFLEET {
namespace {

// Update styleDigest with the sheet: SiteTexts.DigestsAreThoseOfTheTexts prints the new one.
constexpr std::string_view styleDigest = "HA0C0gh/uT8FMjTHxiasnFI9H4UUuFho/ImeGL6GGgY=";

constexpr std::string_view siteStyle = R"css(
article { padding-top: 0.5rem; padding-bottom: 1.5rem; }
article, .frame { max-width: 96rem; }
.site { padding-top: 0.75rem; padding-bottom: 0; font-size: 0.875rem; }
.site ul { list-style: none; display: flex; flex-wrap: wrap; gap: 0 1.25rem; }
.site li > * { display: inline-block; padding: 0.25rem 0; }
[aria-current] { font-weight: 700; }
footer { font-size: 0.875rem; padding-top: 0; }
.strip { gap: 0.75rem; }
.strip .other { color: var(--other); }
.wide { width: 100%; font-size: 0.875rem; }
@media (min-width: 48.01rem) { .wide tbody th { min-width: 10rem; } .list tbody th { min-width: 10rem; } .wide td[data-title="Change"], .wide td.value { min-width: 5.5rem; } }
@media (min-width: 64rem) { .wide tbody th { min-width: 15rem; } .list tbody th { min-width: 12.5rem; } .list td, .wide td[data-title="Model"] { min-width: 5.5rem; } .wide td.value { min-width: 6rem; } }
article > h2 { margin-top: 2.25rem; padding-top: 0.75rem; border-top: 2px solid var(--rule); }
.list { width: 100%; font-size: 0.875rem; }
.number { text-align: right; white-space: nowrap; }
.plain { list-style: none; color: inherit; }
[hidden] { display: none !important; }
.hit > * { background: var(--other-fill); }
.directory { columns: 20rem; column-gap: 2rem; list-style: none; font-size: 0.9375rem; }
.directory li { padding: 0.125rem 0; break-inside: avoid; }
.pager { margin-top: 0.75rem; }
.pager ul { list-style: none; display: flex; flex-wrap: wrap; gap: 0.25rem 1.25rem; }
details.fold { border-bottom: 1px solid var(--rule); padding: 0.375rem 0; margin-top: 0; }
table + details.fold, p + details.fold { margin-top: 1.25rem; }
table + table, p + table { margin-top: 1.25rem; }
h3 + table { margin-top: 0; }

.charts { display: grid; gap: 1.75rem 3rem; grid-template-columns: minmax(0, 1fr); align-items: start; margin-top: 0.75rem; }
@media (min-width: 56rem) { .charts { grid-template-columns: repeat(2, minmax(0, 1fr)); } }
@media (min-width: 104rem) { .charts { grid-template-columns: repeat(3, minmax(0, 1fr)); } }
table.chart { display: table; width: 100%; min-width: 0; margin: 0; table-layout: auto; }
.chart caption { display: table-caption; color: var(--ink); font-weight: 700; font-size: 1rem; }
.chart thead { display: table-header-group; position: static; clip-path: none; }
.chart tbody { display: table-row-group; }
.chart tr { display: table-row; padding: 0; border: 0; }
.chart th, .chart td { display: table-cell; padding: 0.1875rem 0.75rem 0.1875rem 0; border-bottom: 0; }
.chart td::before { content: none; }
.chart thead > tr > * { border-bottom: 1px solid var(--rule); }
.chart tbody th { font-weight: 400; width: 42%; }
.chart td.number { width: 1%; }
.chart td.draw { padding-right: 0; }
.chart .made { display: block; font-size: 0.8125rem; color: var(--quiet); }
.meter { width: 100%; height: 0.875rem; min-width: 3rem; margin-top: 0.25rem; }
.b1 { fill: var(--full); } .b2 { fill: var(--part); stroke: var(--accent); vector-effect: non-scaling-stroke; }
.b3 { fill: var(--other-fill); stroke: var(--other); vector-effect: non-scaling-stroke; }
.legend { list-style: none; display: flex; flex-wrap: wrap; gap: 0.25rem 1.25rem; font-size: 0.8125rem; margin-top: 0.5rem; }
.legend li { display: flex; gap: 0.375rem; align-items: center; }

.marks { margin: 0.3125rem 0 0; max-width: none; }
@media (max-width: 48rem) { .marks { max-width: 100%; } }
.agree, .differ, .self { stroke-width: 3; fill: none; }
.agree { stroke: var(--full); } .differ { stroke: var(--edge); } .self { stroke: var(--other); }

.days { display: grid; grid-template-columns: 9rem minmax(0, 1fr); gap: 0.75rem 1rem; align-items: end; }
.days dt { font-size: 0.8125rem; }
.days b { color: var(--ink); display: block; font-size: 0.9375rem; }
.days svg { width: 100%; height: 3.5rem; border-bottom: 1px solid var(--edge); }
.days .weekend { fill: var(--panel); }
.days .gap { fill: none; stroke: var(--rule); vector-effect: non-scaling-stroke; }
.axis { list-style: none; display: flex; justify-content: space-between; font-size: 0.8125rem; color: var(--quiet); padding-left: 10rem; }
figcaption { font-size: 0.8125rem; margin-top: 0.25rem; max-width: 46rem; }

.tools { display: flex; flex-wrap: wrap; gap: 0.5rem 1rem; align-items: end; margin: 0.75rem 0; }
.search { margin-top: 1rem; }
.tools label, .search label { font-size: 0.8125rem; color: var(--quiet); display: grid; gap: 0.125rem; flex: 0 1 24rem; max-width: 30rem; }
.tools label + label { flex-basis: 12rem; }
input, select {
  font: inherit; font-size: 1rem; color: inherit; background: var(--page); border: 1px solid var(--edge);
  border-radius: 0; padding: 0.375rem 0.5rem; min-height: 2.5rem; width: 100%;
}
#results { margin-top: 1rem; }
#machines-found li { padding: 0.125rem 0; }

@media screen and (max-width: 48rem) {
  .number { text-align: left; }
  .chart .number { text-align: right; }
  .days { grid-template-columns: minmax(0, 1fr); }
  .days svg { height: 2.5rem; }
  .days b { display: inline; }
  .axis { padding-left: 0; }
}
@media print {
  .site, .tools, .search, .pager { display: none; }
  details.fold { display: block; }
  details.fold::details-content { content-visibility: visible; block-size: auto; }
  .charts { grid-template-columns: repeat(2, minmax(0, 1fr)); }
  .chart { break-inside: avoid; }
  a { color: inherit; text-decoration: none; }
}
)css";

}  // namespace

std::string_view GetSiteStyle() {
    return siteStyle;
}

std::string_view GetSiteStyleDigest() {
    return styleDigest;
}

}  // namespace NFLEET
