#include "examples/report/HtmlAssets.h"

namespace report {

const char* const kHtmlStyle = R"CSS(:root {
  color-scheme: light dark;
  --paper: #fcfcfb; --side: #f4f5f6; --ink: #1b2430; --muted: #586475; --line: #d9dde3;
  --rule: #5b6675; --accent: #1c5d99; --wash: #eaf1f8; --amber: #9a5b13;
  --shade: rgb(27 36 48 / 0.22);
  --sans: system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", "Noto Sans",
    "Liberation Sans", Arial, sans-serif;
  --serif: "Iowan Old Style", "Palatino Linotype", Palatino, "Source Serif Pro", "Noto Serif",
    "Liberation Serif", Georgia, serif;
  --mono: ui-monospace, "SF Mono", Menlo, Consolas, "Liberation Mono", monospace;
}
@media screen and (prefers-color-scheme: dark) {
  :root {
    --paper: #14171c; --side: #191d23; --ink: #e3e7ed; --muted: #9ba6b5; --line: #2e353f;
    --rule: #8592a3; --accent: #8cbcf0; --wash: #1f2b3a; --amber: #e0a860; --shade: rgb(0 0 0 / 0.75);
  }
}
* { box-sizing: border-box; }
html { scroll-behavior: smooth; scroll-padding-top: 1.5rem; -webkit-text-size-adjust: 100%; }
body {
  margin: 0; display: grid; grid-template-columns: 17.5rem minmax(0, 1fr);
  background: var(--paper); color: var(--ink); font: 0.9375rem/1.5 var(--sans);
}
a { color: var(--accent); text-underline-offset: 0.15em; }
:focus { outline: none; }
:focus-visible { outline: 2px solid var(--accent); outline-offset: 2px; border-radius: 2px; }
[hidden] { display: none !important; }
.skip-link {
  position: absolute; left: 1rem; top: -4rem; z-index: 2; padding: 0.5rem 1rem;
  background: var(--accent); color: var(--paper); border-radius: 0 0 4px 4px;
}
.skip-link:focus { top: 0; }

/* Outline */
.outline {
  position: sticky; top: 0; height: 100vh; overflow: auto; padding: 1.6rem 0.75rem 2rem 1rem;
  background: var(--side); border-right: 1px solid var(--line); font-size: 0.84rem;
}
.outline summary {
  padding: 0 0.25rem 0.6rem; color: var(--muted); font-size: 0.72rem; font-weight: 600;
  letter-spacing: 0.08em; text-transform: uppercase; cursor: pointer;
}
.outline ul { margin: 0; padding: 0; list-style: none; }
.outline ul ul { padding-left: 0.95rem; }
.outline ul ul ul ul ul ul ul { padding-left: 0; }
.outline li { position: relative; }
.outline a {
  display: flex; gap: 0.45rem; align-items: baseline; padding: 0.2rem 0.4rem 0.2rem 1.25rem;
  border-radius: 4px; color: inherit; line-height: 1.35; text-decoration: none;
  overflow-wrap: anywhere;
}
.outline a:hover { background: var(--line); }
.outline a[aria-current] { background: var(--wash); color: var(--accent); }
.outline .heading { font-weight: 600; }
.kind::before {
  content: ""; flex: none; width: 0.8rem; height: 0.8rem; position: relative; top: 0.1rem;
  background: var(--muted); -webkit-mask: var(--icon) center / contain no-repeat;
  mask: var(--icon) center / contain no-repeat;
}
.kind.heading::before { display: none; }
.kind.table { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M1 2h14v3H1zM1 7h4v3H1zM7 7h8v3H7zM1 12h4v3H1zM7 12h8v3H7z'/%3E%3C/svg%3E"); }
.kind.text { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M1 2h14v2H1zM1 6h14v2H1zM1 10h14v2H1zM1 14h8v2H1z'/%3E%3C/svg%3E"); }
.kind.page { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M2 2h12v3H9.5v10h-3V5H2z'/%3E%3C/svg%3E"); }
.kind.chart { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M1 8h3.5v7H1zM6.2 2h3.5v13H6.2zM11.5 5H15v10h-3.5z'/%3E%3C/svg%3E"); }
.kind.interactive { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M3 1l10 8-5 .6 2.6 4.8-2 1-2.5-4.9L3 14z'/%3E%3C/svg%3E"); }
.kind.model { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M1 1h2v12h12v2H1zM5 9a1.6 1.6 0 1 0 .1 0zM8.5 5.5a1.6 1.6 0 1 0 .1 0zM13 1.5a1.6 1.6 0 1 0 .1 0z'/%3E%3C/svg%3E"); }
.kind.tree { --icon: url("data:image/svg+xml,%3Csvg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 16 16'%3E%3Cpath d='M6 1h4v4H8.7v2.2H13V11h2v4h-4v-4h.6V8.6H4.4V11H5v4H1v-4h2V7.2h4.3V5H6z'/%3E%3C/svg%3E"); }
.toggle {
  position: absolute; left: 0; top: 0; width: 1.25rem; height: 1.55rem; padding: 0; border: 0;
  background: none; color: var(--muted); cursor: pointer;
}
.toggle::before {
  content: ""; display: inline-block; border: 0.28rem solid transparent; border-right: 0;
  border-left: 0.36rem solid currentColor; transition: transform 0.12s;
}
.toggle[aria-expanded="true"]::before { transform: rotate(90deg); }

/* The document */
main { padding: 2.2rem clamp(1.1rem, 4vw, 3.5rem) 5rem; min-width: 0; max-width: 78rem; }
.root {
  margin: 0 0 0.3rem; color: var(--muted); font-size: 0.72rem; font-weight: 600;
  letter-spacing: 0.08em; text-transform: uppercase;
}
h1, h2, h3, h4, h5, h6 { line-height: 1.2; text-wrap: balance; overflow-wrap: anywhere; }
h1 { margin: 0 0 1.4rem; font: 600 2.1rem/1.15 var(--serif); letter-spacing: -0.01em; }
h2 {
  margin: 3.2rem 0 1.3rem; padding-top: 1.1rem; border-top: 1px solid var(--line);
  font: 600 1.5rem/1.2 var(--serif);
}
h3 { margin: 2.6rem 0 1.1rem; font: 600 1.15rem/1.2 var(--serif); }
h4, h5, h6 { margin: 1.8rem 0 0.8rem; font-size: 0.95rem; }
figure, .block { margin: 0 0 2rem; max-width: 100%; }
.title { margin: 0; font-weight: 600; overflow-wrap: anywhere; }
figure > .title, details > .title { margin-bottom: 0.5rem; font-size: 0.9rem; }
figcaption, summary { white-space: pre-line; }

/* Tables */
/* Shadows at the edges tell that there is more to scroll to. */
.scroll {
  max-width: 100%; overflow-x: auto;
  background:
    linear-gradient(to right, var(--paper) 40%, transparent) left / 2.5rem 100% no-repeat local,
    linear-gradient(to left, var(--paper) 40%, transparent) right / 2.5rem 100% no-repeat local,
    radial-gradient(farthest-side at left, var(--shade), transparent) left / 0.8rem 100% no-repeat,
    radial-gradient(farthest-side at right, var(--shade), transparent) right / 0.8rem 100% no-repeat;
}
table {
  width: max-content; border-collapse: collapse; border-top: 2px solid var(--rule); border-bottom: 2px solid var(--rule);
  font-size: 0.875rem; line-height: 1.35; font-variant-numeric: tabular-nums lining-nums;
}
th, td { padding: 0.2rem 0.55rem; vertical-align: top; font-weight: 400; white-space: pre-line; }
td { text-align: right; white-space: nowrap; }
td.text { text-align: left; white-space: pre-line; max-width: 34rem; overflow-wrap: anywhere; }
th { text-align: left; max-width: 18rem; }
thead th { vertical-align: bottom; }
thead .label { text-align: right; }
thead .label[scope="colgroup"] {
  padding-bottom: 0.3rem; text-align: center;
  background: linear-gradient(var(--line), var(--line)) bottom / calc(100% - 0.8rem) 1px no-repeat;
}
thead { border-bottom: 1px solid var(--rule); }
tbody + tbody { border-top: 1px solid var(--line); }
tbody tr:hover > td, tbody tr:hover > th[scope="row"] { background-color: var(--wash); }
table > .layers {
  caption-side: top; padding: 0.15rem 0 0.3rem; color: var(--muted); text-align: left;
  font-size: 0.84rem;
}
/* The menus above say it on the screen. */
@media screen {
  .controls ~ .scroll .layers {
    position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%);
  }
}
.warnings table { border-width: 1px 0 1px 3px; border-color: var(--amber); }
.warnings .title { color: var(--amber); }
sup { font-size: 0.72em; line-height: 0; }
/* Beside a number a marker hangs, so that the digits stay aligned. */
td:not(.text) > sup { display: inline-block; width: 0; }
.mark { padding: 0 0.1em; text-decoration: none; }
.mark:hover { text-decoration: underline; }
.controls {
  display: flex; flex-wrap: wrap; gap: 0.5rem 1.4rem; align-items: center; margin: 0 0 0.6rem;
  color: var(--muted); font-size: 0.84rem;
}
.controls select {
  margin-left: 0.3rem; padding: 0.25rem 0.4rem; max-width: 16rem; border: 1px solid var(--line);
  border-radius: 4px; background: var(--paper); color: var(--ink); font: inherit;
}
.controls input { margin: 0 0.3rem 0 0; vertical-align: -0.1em; accent-color: var(--accent); }
.none, .note { margin: 0.4rem 0; color: var(--muted); font-size: 0.84rem; font-style: italic; }
.caption { margin: 0.5rem 0 0; max-width: 46rem; color: var(--muted); font-size: 0.84rem; white-space: pre-line; }
.footnotes { margin: 0.45rem 0 0; padding: 0; list-style: none; color: var(--muted); font-size: 0.8rem; }
.footnotes li { display: flex; gap: 0.5em; max-width: 46rem; white-space: pre-line; }
.footnotes li:target { background: var(--wash); color: var(--ink); }
.footnotes .marker { min-width: 0.7em; }
.back { text-decoration: none; }
details > summary { cursor: pointer; width: fit-content; }
details.notes-body > .title { color: var(--muted); font-size: 0.875rem; font-weight: 500; margin-bottom: 0.2rem; }
details.notes-body[open] > .title { margin-bottom: 0.5rem; }

/* Text and payloads */
.block { padding: 0.1rem 0 0.1rem 0.9rem; border-left: 3px solid var(--amber); }
.block.log { border-color: var(--line); color: var(--muted); font-size: 0.84rem; }
.block.log .title { display: none; }
.block p { margin: 0; }
.lines { white-space: pre-wrap; overflow-wrap: anywhere; }
.sort {
  margin-left: 0.6em; padding: 0.05em 0.5em; border: 1px solid var(--line); border-radius: 1em;
  color: var(--muted); font-size: 0.72rem; font-weight: 500;
}
.chart img { display: block; max-width: 100%; height: auto; }
.payload details, .size-only { margin: 0.3rem 0 0; font-size: 0.84rem; }
.payload summary, .size-only { color: var(--muted); }
.name { color: var(--ink); }
.size { margin-left: 0.5em; color: var(--muted); font-variant-numeric: tabular-nums; }
pre {
  margin: 0.4rem 0; padding: 0.7rem 0.9rem; max-height: 24rem; overflow: auto;
  background: var(--side); border: 1px solid var(--line); border-radius: 4px;
  font: 0.78rem/1.5 var(--mono); tab-size: 2;
}

@media (max-width: 52rem) {
  body { display: block; }
  .outline {
    z-index: 1; height: auto; max-height: 75vh; padding: 0.7rem 1.1rem;
    border: 0; border-bottom: 1px solid var(--line);
  }
  .outline summary { padding: 0.15rem 0; }
  .outline a { padding-top: 0.35rem; padding-bottom: 0.35rem; }
  .toggle { height: 1.9rem; }
  html { scroll-padding-top: 3.5rem; }
  main { padding-top: 1.4rem; }
  h1 { font-size: 1.65rem; }
  h2 { margin-top: 2.4rem; font-size: 1.3rem; }
  th { max-width: 11rem; }
  .controls select { min-height: 2.2rem; }
}
@media (prefers-reduced-motion: reduce) {
  html { scroll-behavior: auto; }
  .toggle::before { transition: none; }
}
@media print {
  :root { --paper: #fff; --ink: #000; --muted: #444; --line: #bbb; --rule: #000; --accent: #000; --wash: none; }
  body { display: block; font-size: 9.5pt; }
  .outline, .skip-link, .controls, .back, .payload pre { display: none; }
  main { padding: 0; max-width: none; }
  .scroll { overflow: visible; background: none; }
  h2, h3, .title { break-after: avoid; }
  tr, .chart { break-inside: avoid; }
  thead { display: table-header-group; }
  a { color: inherit; text-decoration: none; }
}
)CSS";

const char* const kHtmlStyleWithoutScript = R"CSS(.toggle, .controls { display: none; }
.layer.start[hidden] { display: block !important; }
.controls ~ .scroll .layers { position: static; width: auto; height: auto; clip-path: none; }
.layer + .layer { margin-top: 1.2rem; }
)CSS";

}  // namespace report
