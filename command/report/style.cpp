#include "command/report/style.h"

namespace zamofw::report {
namespace {

constexpr const char* kStyleSheet = R"css(:root {
    color-scheme: light dark;
    --paper: #ffffff; --band: #f2f4f6; --ink: #1a1e22; --soft: #57606a; --rule: #d0d5da;
    --allowed: #1a6a3c; --partly: #835300; --denied: #a8222b; --link: #1f5287;
}
@media (prefers-color-scheme: dark) {
    :root {
        --paper: #15181b; --band: #1f2428; --ink: #e4e7ea; --soft: #a3abb3; --rule: #3a4147;
        --allowed: #62c28d; --partly: #e0b04a; --denied: #ff918a; --link: #8ab8ea;
    }
}
* { box-sizing: border-box; }
html { -webkit-text-size-adjust: 100%; text-size-adjust: 100%; }
body {
    margin: 0; padding: 1.75rem 1rem 3rem; background: var(--paper); color: var(--ink);
    font: 0.9375rem/1.45 -apple-system, "Segoe UI", Roboto, Cantarell, "Noto Sans", "DejaVu Sans",
        sans-serif;
    font-variant-numeric: tabular-nums; overflow-wrap: anywhere;
}
main { max-width: 64rem; margin: 0 auto; }
h1, h2, h3, p { margin: 0; }
h1 { font-size: 1.5rem; line-height: 1.2; font-weight: 650; }
h2 {
    margin-top: 2.25rem; padding-top: 0.6rem; border-top: 2px solid var(--ink);
    font-size: 1.0625rem; line-height: 1.3; font-weight: 650;
}
h3 { margin-top: 1.4rem; font-size: 0.9375rem; font-weight: 650; }
h2 + *, h3 + table { margin-top: 0.5rem; }
a { color: var(--link); }
strong { font-weight: 650; }
.soft, .note, caption, thead, .remedy, nav { color: var(--soft); }
.note { max-width: 44rem; margin-top: 0.5rem; font-size: 0.8125rem; }
.code {
    font-family: ui-monospace, "SF Mono", "Cascadia Mono", "DejaVu Sans Mono", monospace;
    font-size: 0.875em;
}
.summary { max-width: 44rem; margin-top: 0.9rem; font-size: 1.125rem; line-height: 1.5; }
.summary > span { display: block; padding-left: 1.6rem; }
.summary .mark { width: 1.15rem; height: 1.15rem; margin: 0 0.45rem 0 -1.6rem; }
nav { margin-top: 1rem; font-size: 0.8125rem; }
nav a { display: inline-block; margin-right: 0.9rem; padding: 0.2rem 0; }
.drawings, .unseen {
    position: absolute; width: 1px; height: 1px; margin: -1px; overflow: hidden;
    clip-path: inset(50%); white-space: nowrap;
}
.mark { width: 1em; height: 1em; vertical-align: -0.14em; }
.allowed { color: var(--allowed); }
.partly { color: var(--partly); }
.denied { color: var(--denied); }
.none { color: var(--soft); }
.cut { stroke: var(--paper); stroke-width: 2; }
.line { stroke: currentColor; stroke-width: 1.7; }

table { border-collapse: collapse; width: 100%; }
caption { padding: 0 0 0.25rem; text-align: left; font-size: 0.8125rem; }
th { font-weight: inherit; text-align: left; }
th, td { padding: 0.28rem 0.75rem 0.28rem 0; vertical-align: baseline; }
.list thead th {
    padding-bottom: 0.2rem; border-bottom: 1px solid var(--soft); vertical-align: bottom;
}
.list thead span { font-size: 0.8125rem; }
.list tbody tr { border-bottom: 1px solid var(--rule); }
.list :is(th, td):last-child { padding-right: 0; }
.list { table-layout: fixed; }
.list thead th { font-family: inherit; }
.list .number { width: 2.4em; color: var(--soft); }
.list .verdict { width: 7em; }
.list .what { width: 22%; }
.list .who { width: 26%; }
.list .count { width: 5.5em; text-align: right; }
.list .time { width: 13.5em; white-space: nowrap; }
.list .user { width: 8em; }
.list .kind { width: 10.5em; }
.list .place { width: 8em; }
.remedy { display: block; font-size: 0.8125rem; }
details { margin-top: 0.5rem; }
summary { cursor: pointer; color: var(--link); }

.legend { margin-top: 0.5rem; font-size: 0.8125rem; }
.hint { display: none; color: var(--soft); }
.key { margin-right: 1.1rem; white-space: nowrap; }
.scroll { position: relative; margin-top: 0.25rem; overflow-x: auto; }
.scroll:focus-visible { outline: 2px solid var(--link); outline-offset: 2px; }
.matrix { width: auto; }
.matrix th, .matrix td { padding: 0.22rem 0; }
.matrix th[scope="row"], .matrix thead th:first-child {
    position: sticky; left: 0; min-width: 9rem; max-width: 24rem; padding-right: 1rem;
    background: var(--paper); z-index: 1;
}
.matrix thead th { vertical-align: bottom; }
.matrix .service span {
    display: block; max-height: 11rem; margin: 0 auto; overflow: hidden; color: var(--ink);
    writing-mode: vertical-rl; transform: rotate(180deg); text-overflow: ellipsis;
    white-space: nowrap; font-size: 0.8125rem; line-height: 1.3;
}
.matrix td { min-width: 1.9rem; border-left: 1px solid var(--rule); text-align: center; }
.matrix .service:last-child, .matrix td:last-child { border-left: 1px solid var(--soft); }
.matrix tbody tr { border-bottom: 1px solid var(--rule); }
.matrix .way th { padding-top: 0.8rem; color: var(--soft); border-bottom: 1px solid var(--soft); }
.matrix .way div { position: sticky; left: 0; width: max-content; max-width: calc(100vw - 2rem); }
.matrix .way b { color: var(--ink); font-weight: 650; }

@media (max-width: 44rem) {
    body { padding-top: 1.25rem; }
    .hint { display: block; }
    .list, .list tbody, .list caption { display: block; }
    .list thead { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
    .list tbody tr { display: flex; flex-wrap: wrap; gap: 0.1rem 0.75rem; padding: 0.45rem 0; }
    .list tbody tr > [role] { width: auto; padding: 0; }
    .list tbody tr > .number { min-width: 1.4em; }
    .list .who, .list .message, .list .notes { flex-basis: 100%; }
    .list td:empty { display: none; }
    .list .count { text-align: left; font-size: 0.8125rem; color: var(--soft); }
    .list [data-title]::before { content: attr(data-title) " "; color: var(--soft); }
    .matrix th[scope="row"], .matrix thead th:first-child { max-width: 10.5rem; padding-right: 0.5rem; }
}

@media print {
    :root {
        color-scheme: light;
        --paper: #ffffff; --band: #ffffff; --ink: #000000; --soft: #4a4f55; --rule: #b8bdc2;
        --allowed: #1a6a3c; --partly: #835300; --denied: #a8222b; --link: #000000;
    }
    @page { margin: 14mm 15mm 16mm; }
    body { padding: 0; font-size: 9pt; line-height: 1.35; }
    main { max-width: none; }
    nav { display: none; }
    h1 { font-size: 15pt; }
    h2 { margin-top: 7mm; font-size: 11pt; break-after: avoid; }
    h3 { font-size: 9.5pt; }
    h3, .legend, h3 + p, caption { break-after: avoid; }
    .summary { font-size: 11pt; }
    .note, .remedy, caption, .legend, .list thead span, .matrix .service span { font-size: 7.5pt; }
    tr, .summary { break-inside: avoid; }
    thead { display: table-header-group; }
    .scroll { overflow: visible; }
    .matrix th[scope="row"], .matrix thead th:first-child, .matrix .way div { position: static; }
    .matrix td { min-width: 6.2mm; }
    .matrix .way { break-after: avoid; }
}
)css";

}  // namespace

const char* styleSheet() {
    return kStyleSheet;
}

}  // namespace zamofw::report
