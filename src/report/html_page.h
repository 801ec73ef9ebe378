// Style and script of the HTML report. The page needs nothing else: no network, no fonts, no
// images.
#pragma once

#include <string_view>

namespace mediasplit::report {

inline constexpr std::string_view kPageStyle = R"css(
:root {
  color-scheme: light dark;
  --back: #fff; --panel: #f6f7f9; --text: #1b1f24; --quiet: #57606a; --line: #d5dae0;
  --fatal: #8b0a1a; --error: #b3261e; --warning: #7d5200; --info: #0b57a4; --good: #1a6b35;
  --accent: #0b57a4;
}
@media (prefers-color-scheme: dark) {
  :root {
    --back: #14171b; --panel: #1d2127; --text: #e4e8ec; --quiet: #a3adb8; --line: #363d46;
    --fatal: #ff9aa5; --error: #ff8a80; --warning: #f2c14e; --info: #8ab8f5; --good: #7fd69a;
    --accent: #8ab8f5;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--back); color: var(--text);
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Liberation Sans", sans-serif; }
main, header { max-width: 1200px; margin: 0 auto; padding: 0 20px; }
header { padding-top: 24px; }
h1 { font-size: 1.35rem; margin: 0 0 4px; overflow-wrap: anywhere; }
h2 { font-size: 1.05rem; margin: 28px 0 8px; }
p { margin: 4px 0; }
.quiet { color: var(--quiet); }
.badge { font-weight: 600; white-space: nowrap; }
.badge::before { content: "\25CF"; margin-right: .35em; }
.good { color: var(--good); }
.fatal { color: var(--fatal); } .error { color: var(--error); }
.warning { color: var(--warning); } .info { color: var(--info); }
table { border-collapse: collapse; width: 100%; }
th, td { text-align: left; vertical-align: top; padding: 6px 10px;
  border-bottom: 1px solid var(--line); }
th { font-weight: 600; }
thead th { background: var(--panel); }
td.number, th.number { text-align: right; font-variant-numeric: tabular-nums; white-space: nowrap; }
.summary { width: auto; }
.summary td, .summary th { text-align: right; }
.summary th:first-child { text-align: left; }
.summary span { margin-left: .5em; }
.files { margin: 0; padding: 0; list-style: none; }
.files li { overflow-wrap: anywhere; }
.filters { display: flex; flex-wrap: wrap; gap: 10px 18px; align-items: center;
  padding: 10px 12px; background: var(--panel); border: 1px solid var(--line); border-radius: 6px;
  margin-bottom: 8px; }
.filters fieldset { display: flex; flex-wrap: wrap; gap: 4px 12px; border: 0; margin: 0; padding: 0; }
.filters legend { position: absolute; width: 1px; height: 1px; overflow: hidden; clip-path: inset(50%); }
.filters label { display: inline-flex; gap: .4em; align-items: center; }
.filters input[type=search] { width: 16em; }
.filters input[type=search], .filters select, button { font: inherit; color: inherit;
  background: var(--back); border: 1px solid var(--line); border-radius: 4px; padding: 4px 8px;
  max-width: 100%; }
.filters select { max-width: 18em; }
thead button { all: unset; cursor: pointer; font-weight: 600; }
thead button:focus-visible, .filters :focus-visible, summary:focus-visible {
  outline: 2px solid var(--accent); outline-offset: 2px; }
th[aria-sort=ascending] button::after { content: " \25B2"; font-size: .7em; }
th[aria-sort=descending] button::after { content: " \25BC"; font-size: .7em; }
#findings td { overflow-wrap: anywhere; }
#findings td.level, #findings td.class { white-space: nowrap; overflow-wrap: normal; }
#findings td.stream { max-width: 16em; }
#findings td.message { width: 50%; }
tr.hidden { display: none; }
details { margin: 4px 0 32px; }
summary { cursor: pointer; }
.ids { font-variant-numeric: tabular-nums; }
footer { height: 24px; }
@media (max-width: 760px) {
  main, header { padding-left: 12px; padding-right: 12px; }
  #findings thead { display: block; }
  #findings thead tr { display: flex; flex-wrap: wrap; background: var(--panel); }
  #findings thead th { border: 0; padding: 4px 8px; background: none; }
  #findings tbody, #findings tbody tr { display: block; }
  #findings tbody tr { border-bottom: 1px solid var(--line); padding: 8px 0; }
  #findings tbody tr.hidden { display: none; }
  #findings tbody td { display: inline-block; border: 0; padding: 0 10px 0 0; width: auto; max-width: 100%; }
  #findings tbody td.message { display: block; width: 100%; }
  #findings tbody td.number:last-child::before { content: "\00d7\2009"; }
  .scroll { overflow-x: auto; }
}
@media print { .filters { display: none; } }
)css";

inline constexpr std::string_view kPageScript = R"js(
(function () {
  "use strict";
  var form = document.getElementById("filters");
  var body = document.querySelector("#findings tbody");
  if (!form || !body) { return; }
  var rows = Array.prototype.slice.call(body.rows);
  var shown = document.getElementById("shown");
  var texts = rows.map(function (row) { return row.textContent.toLowerCase(); });
  var choices = ["stream", "family", "layer"];

  function levels() {
    var wanted = {};
    form.querySelectorAll("input[name=level]").forEach(function (box) {
      wanted[box.value] = box.checked;
    });
    return wanted;
  }

  function apply() {
    var wanted = levels();
    var words = form.elements.text.value.toLowerCase().split(/\s+/).filter(Boolean);
    var count = 0;
    rows.forEach(function (row, i) {
      var fits = wanted[row.dataset.level] !== false &&
        choices.every(function (name) {
          return form.elements[name].value === "" || row.dataset[name] === form.elements[name].value;
        }) &&
        words.every(function (word) { return texts[i].indexOf(word) >= 0; });
      row.classList.toggle("hidden", !fits);
      count += fits ? 1 : 0;
    });
    shown.textContent = "Showing " + count + " of " + rows.length;
  }

  // The filters stand in the address, so that a view can be kept and passed on.
  function store() {
    var state = new URLSearchParams();
    var wanted = levels();
    var off = Object.keys(wanted).filter(function (level) { return !wanted[level]; });
    if (off.length) { state.set("hide", off.join(",")); }
    choices.concat("text").forEach(function (name) {
      if (form.elements[name].value) { state.set(name, form.elements[name].value); }
    });
    history.replaceState(null, "", "#" + state);
  }

  function load() {
    var state = new URLSearchParams(location.hash.slice(1));
    var off = (state.get("hide") || "").split(",");
    form.querySelectorAll("input[name=level]").forEach(function (box) {
      box.checked = off.indexOf(box.value) < 0;
    });
    choices.concat("text").forEach(function (name) {
      form.elements[name].value = state.get(name) || "";
    });
  }

  function compare(a, b) {
    var x = Number(a), y = Number(b);
    return isNaN(x) || isNaN(y) ? a.localeCompare(b) : x - y;
  }

  document.querySelectorAll("#findings thead th").forEach(function (head, column) {
    head.querySelector("button").addEventListener("click", function () {
      var up = head.getAttribute("aria-sort") !== "ascending";
      document.querySelectorAll("#findings thead th").forEach(function (other) {
        other.removeAttribute("aria-sort");
      });
      head.setAttribute("aria-sort", up ? "ascending" : "descending");
      rows.map(function (row, i) {
        var cell = row.cells[column];
        return { row: row, i: i, key: cell.dataset.key || cell.textContent };
      }).sort(function (a, b) {
        return (up ? 1 : -1) * compare(a.key, b.key) || a.i - b.i;
      }).forEach(function (entry) { body.appendChild(entry.row); });
    });
  });
  form.addEventListener("input", function () { apply(); store(); });
  form.addEventListener("submit", function (event) { event.preventDefault(); });
  form.addEventListener("reset", function () {
    setTimeout(function () { apply(); store(); }, 0);
  });
  window.addEventListener("hashchange", function () { load(); apply(); });
  form.hidden = false;
  load();
  apply();
})();
)js";

}  // namespace mediasplit::report
