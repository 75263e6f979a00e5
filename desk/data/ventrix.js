/* Shows what a page published with Ventrix carries: filters it by its attributes, and shows where each passage comes from.
 *
 *   <link rel="stylesheet" href="ventrix.css" />
 *   <script src="ventrix.js" defer="defer"></script>
 *
 * Attributes of the script element: data-tags-attribute (default data-twtags), data-xpath-attribute (default: XPaths are among
 * the tags), data-editor-root (the folder of the sources; with it, passages link to the editor). An element
 * <script type="application/json" id="ventrix-places"> holds the page's part of ventrix-map.json; without it, files and lines
 * are shown as far as the tags name them.
 */
(function () {
  'use strict';

  const script = document.currentScript;
  const tagsAttribute = script?.dataset.tagsAttribute || 'data-twtags';
  const xpathAttribute = script?.dataset.xpathAttribute || '';
  const editorRoot = script?.dataset.editorRoot || '';
  const blocks = 'li, tr, section, article, div, p, dl, ul, ol, table, figure, blockquote';
  const labels = '.number, .notetitle, .ventrix-bar, .ventrix-panel';

  /** The pairs of a tags value: "audienceQL_SEPexpertQL_SEP" gives [['audience', 'expert']]. */
  function pairsOf(value) {
    const parts = value.split('QL_SEP').slice(0, -1);
    const pairs = [];
    for (let i = 0; i + 1 < parts.length; i += 2) {
      pairs.push([parts[i], parts[i + 1]]);
    }
    return pairs;
  }

  /** The numbers of the child elements on the way from the root, which the map uses for elements without an id. */
  function positionOf(element) {
    let position = '';
    for (let node = element; node !== document.documentElement; node = node.parentElement) {
      position = '/' + (Array.prototype.indexOf.call(node.parentElement.children, node) + 1) + position;
    }
    return position;
  }

  function readPlaces() {
    const places = new Map();
    try {
      for (const place of JSON.parse(document.getElementById('ventrix-places')?.textContent || '[]')) {
        places.set(place.id, place);
      }
    } catch (error) {
      console.warn('ventrix.js: the places of this page cannot be read: ' + error.message);
    }
    return places;
  }

  function readPassage(element, places) {
    const tags = pairsOf(element.getAttribute(tagsAttribute) || '');
    const own = element.id && document.getElementById(element.id) === element ? places.get(element.id) : undefined;
    // The XPath comes after preserved queries, which have the same name.
    const named = name => tags.filter(pair => pair[0] === name).pop()?.[1];
    const found = own || places.get(positionOf(element)) || {};
    // A browser adds elements that HTML implies, such as tbody, which leads to the place of another element.
    const isOwn = found.element === element.localName && (!found.xpath || [undefined, found.xpath].includes(named('data-qlxpath')));
    const place = isOwn ? found : {};
    return {
      element,
      attributes: tags.filter(pair => !pair[0].startsWith('data-ql')),
      file: place.source || named('data-qlsource')?.replaceAll('\\', '/'),
      xpath: place.xpath || (xpathAttribute && element.getAttribute(xpathAttribute)) || named('data-qlxpath'),
      line: place.line,
      reusedBy: place.reusedBy,
    };
  }

  function make(name, properties, ...children) {
    const element = Object.assign(document.createElement(name), properties);
    element.append(...children);
    return element;
  }

  // Filtering.

  /** The values that occur, by attribute: {audience: ['expert', 'novice']}. */
  function valuesOf(passages) {
    const values = new Map();
    for (const [name, value] of passages.flatMap(passage => passage.attributes)) {
      const known = values.get(name) || values.set(name, new Set()).get(name);
      value.split(/\s+/).filter(Boolean).forEach(word => known.add(word));
    }
    return values;
  }

  /** As in a filter of a publication: a passage goes if all values of one of its attributes are switched off. */
  function isExcluded(passage, off) {
    return passage.attributes.some(([name, value]) => {
      const words = value.split(/\s+/).filter(Boolean);
      return words.length > 0 && words.every(word => off.has(name + ' ' + word));
    });
  }

  /** Whether something is left to see. A generated number or label alone is nothing. */
  function hasContent(element) {
    for (const node of element.childNodes) {
      if (node.nodeType === Node.TEXT_NODE && node.data.trim()) {
        return true;
      }
      if (node.nodeType === Node.ELEMENT_NODE && !node.hasAttribute('data-ventrix-hidden') && !node.matches(labels) &&
          (node.matches('img, svg, video, audio, object, iframe, input, hr') || hasContent(node))) {
        return true;
      }
    }
    return false;
  }

  function hide(element) {
    element.setAttribute('data-ventrix-hidden', '');
    const parent = element.parentElement;
    if (parent && parent !== document.body && parent.matches(blocks + ', td, th, dd, dt, span, a, em, strong') && !hasContent(parent)) {
      // An empty cell keeps its place in the row; an empty row goes.
      if (parent.matches('td, th')) {
        const row = parent.parentElement;
        if (row && !hasContent(row)) {
          hide(row);
        }
        return;
      }
      hide(parent);
    }
  }

  function filter(passages, off, status) {
    document.querySelectorAll('[data-ventrix-hidden]').forEach(element => element.removeAttribute('data-ventrix-hidden'));
    const excluded = passages.filter(passage => isExcluded(passage, off));
    excluded.forEach(passage => hide(passage.element));
    status.textContent = excluded.length === 0 ? '' : excluded.length + ' of ' + passages.length + ' passages hidden';
  }

  function makeChips(passages, status) {
    const off = new Set();
    return [...valuesOf(passages)].sort().map(([name, values]) => {
      const group = make('div', { className: 'ventrix-group' }, make('span', { className: 'ventrix-name', textContent: name + ':' }));
      group.setAttribute('role', 'group');
      group.setAttribute('aria-label', name);
      for (const value of [...values].sort()) {
        const chip = make('button', { type: 'button', className: 'ventrix-chip', textContent: value });
        chip.setAttribute('aria-pressed', 'true');
        chip.setAttribute('aria-label', name + ': ' + value);
        chip.addEventListener('click', () => {
          const key = name + ' ' + value;
          const isOn = off.delete(key) || !off.add(key);
          chip.setAttribute('aria-pressed', String(isOn));
          filter(passages, off, status);
        });
        group.append(chip);
      }
      return group;
    });
  }

  // Sources.

  function editorLink(file, line) {
    const path = (editorRoot.replaceAll('\\', '/').replace(/\/$/, '') + '/' + file).replace(/^\/?/, '/');
    const encoded = path.split('/').map(encodeURIComponent).join('/').replaceAll('%3A', ':');
    return 'vscode://file' + encoded + (line ? ':' + line : '');
  }

  function row(name, value) {
    return [make('dt', { textContent: name }), make('dd', { textContent: value })];
  }

  function describe(passage) {
    const list = make('dl', {});
    if (passage.file) {
      list.append(...row('file', passage.file + (passage.line ? ', line ' + passage.line : '')));
    }
    if (passage.xpath) {
      list.append(...row('place', passage.xpath));
    }
    if (passage.reusedBy) {
      list.append(...row('reused by', passage.reusedBy.source + (passage.reusedBy.line ? ', line ' + passage.reusedBy.line : '')));
    }
    passage.attributes.forEach(([name, value]) => list.append(...row(name, value)));
    const parts = [list];
    if (editorRoot && passage.file) {
      parts.push(make('a', { href: editorLink(passage.file, passage.line), textContent: 'Open in the editor' }));
    }
    return parts;
  }

  function makeSourceSwitch(passages, bar, panel) {
    const byElement = new Map(passages.map(passage => [passage.element, passage]));
    const button = make('button', { type: 'button', textContent: 'Show source' });
    let shown = null;

    const show = target => {
      const element = target instanceof Element && !panel.contains(target) ? target.closest('[' + tagsAttribute + '], .ventrix-focus') : null;
      const passage = element && byElement.get(element);
      if (!passage || element === shown) {
        return;
      }
      shown?.classList.remove('ventrix-shown');
      shown = element;
      shown.classList.add('ventrix-shown');
      // In the half of the window that the passage is not in.
      const isLow = element.getBoundingClientRect().top > window.innerHeight / 2;
      panel.style.top = isLow ? '12px' : 'auto';
      panel.style.bottom = isLow ? 'auto' : bar.offsetHeight + 12 + 'px';
      panel.replaceChildren(...describe(passage));
      panel.hidden = false;
    };
    const onMove = event => show(event.target);
    const setOn = isOn => {
      button.setAttribute('aria-pressed', String(isOn));
      for (const { element } of passages) {
        element.classList.toggle('ventrix-focus', isOn);
        if (isOn && element.tabIndex < 0) {
          element.tabIndex = 0;
          element.dataset.ventrixTab = '';
        } else if (!isOn && element.dataset.ventrixTab !== undefined) {
          element.removeAttribute('tabindex');
          delete element.dataset.ventrixTab;
        }
      }
      document[isOn ? 'addEventListener' : 'removeEventListener']('pointerover', onMove);
      document[isOn ? 'addEventListener' : 'removeEventListener']('focusin', onMove);
      if (!isOn) {
        shown?.classList.remove('ventrix-shown');
        shown = null;
        panel.hidden = true;
      }
    };
    setOn(false);
    button.addEventListener('click', () => setOn(button.getAttribute('aria-pressed') !== 'true'));
    document.addEventListener('keydown', event => {
      if (event.key === 'Escape' && button.getAttribute('aria-pressed') === 'true') {
        setOn(false);
        button.focus();
      }
    });
    return button;
  }

  function start() {
    const places = readPlaces();
    const selector = '[' + tagsAttribute + ']' + (xpathAttribute ? ', [' + xpathAttribute + ']' : '');
    const passages = [...document.body.querySelectorAll(selector)].map(element => readPassage(element, places));
    if (passages.length === 0) {
      return;
    }
    const status = make('span', { className: 'ventrix-status' });
    status.setAttribute('role', 'status');
    const panel = make('div', { className: 'ventrix-panel', hidden: true });
    panel.setAttribute('role', 'region');
    panel.setAttribute('aria-label', 'Source of the passage');
    panel.setAttribute('aria-live', 'polite');
    const bar = make('div', { className: 'ventrix-bar' });
    bar.setAttribute('role', 'region');
    bar.setAttribute('aria-label', 'Carried data');
    bar.append(...makeChips(passages, status), makeSourceSwitch(passages, bar, panel), status);
    document.body.append(panel, bar);
    // The bar covers the end of the page, which has to be reachable.
    document.body.style.paddingBottom = bar.offsetHeight + 16 + 'px';
  }

  if (document.readyState === 'loading') {
    document.addEventListener('DOMContentLoaded', start);
  } else {
    start();
  }
})();
