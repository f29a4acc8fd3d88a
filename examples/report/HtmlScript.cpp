#include "examples/report/HtmlAssets.h"

namespace report {

const char* const kHtmlScript = R"JS('use strict';
(() => {
  const all = (root, selector) => [...root.querySelectorAll(selector)];

  // Tables: the menus and the switch choose which layer is shown.
  for (const table of all(document, 'figure.table')) {
    const controls = table.querySelector('.controls');
    if (!controls) continue;
    const menus = all(controls, 'select');
    const skip = controls.querySelector('.skip');
    const none = table.querySelector('.scroll > .none');
    const layers = new Map();
    for (const layer of all(table, '.layer')) {
      layers.set(layer.dataset.key + ' ' + layer.dataset.view, layer);
    }
    let current = table.querySelector('.layer:not([hidden])');
    const show = () => {
      const key = menus.map(menu => menu.value).join();
      const packed = skip ? skip.checked : !layers.has(key + ' whole');
      const next = layers.get(key + (packed ? ' packed' : ' whole')) || layers.get(key + ' both');
      if (current) current.hidden = true;
      if (next) next.hidden = false;
      none.hidden = Boolean(next);
      current = next;
    };
    controls.addEventListener('change', show);
    show();
  }

  // Outline: branches fold, and the entry of the item in view is marked.
  const outline = document.querySelector('.outline');
  const contents = outline.querySelector('details');
  for (const toggle of all(outline, '.toggle')) {
    toggle.addEventListener('click', () => {
      const open = toggle.getAttribute('aria-expanded') !== 'true';
      toggle.setAttribute('aria-expanded', open);
      toggle.parentElement.querySelector('ul').hidden = !open;
    });
  }
  const narrow = matchMedia('(max-width: 52rem)');
  const fold = () => { contents.open = !narrow.matches; };
  narrow.addEventListener('change', fold);
  fold();
  outline.addEventListener('click', event => {
    if (narrow.matches && event.target.closest('a')) contents.open = false;
  });

  const entries = new Map(all(outline, 'a').map(a => [a.hash.slice(1), a]));
  const inView = new Set();
  let marked = null;
  const observer = new IntersectionObserver(changes => {
    for (const change of changes) {
      if (change.isIntersecting) inView.add(change.target.id); else inView.delete(change.target.id);
    }
    const first = [...entries.keys()].find(id => inView.has(id));
    if (!first || entries.get(first) === marked) return;
    if (marked) marked.removeAttribute('aria-current');
    marked = entries.get(first);
    marked.setAttribute('aria-current', 'true');
  }, { rootMargin: '-10% 0px -60% 0px' });
  for (const id of entries.keys()) {
    const item = document.getElementById(id);
    if (item) observer.observe(item);
  }

  // Footnotes: the way back leads to the marker that was followed.
  let origin = null;
  document.addEventListener('click', event => {
    const link = event.target.closest('a.mark, a.back');
    if (!link) return;
    if (link.matches('.mark')) {
      origin = link;
      return;
    }
    const table = link.closest('figure');
    const note = link.closest('li').id;
    const visible = mark => mark.hash === '#' + note && mark.getClientRects().length;
    const mark = origin && table.contains(origin) && visible(origin) ? origin
      : all(table, 'a.mark').find(visible);
    if (!mark) return;
    event.preventDefault();
    mark.scrollIntoView({ block: 'center' });
    mark.focus();
  });

  // On paper everything is unfolded, but for the outline, which is not printed.
  let folded = [];
  addEventListener('beforeprint', () => {
    folded = all(document, 'main details.notes-body:not([open])');
    for (const details of folded) details.open = true;
  });
  addEventListener('afterprint', () => {
    for (const details of folded) details.open = false;
  });
})();
)JS";

}  // namespace report
