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
  // What goes as a whole when all of its text is hidden, with its images; and what only goes if it has no image.
  const containers = 'li, tr, section, article, aside, div, dl, ul, ol, table, thead, tbody, tfoot, figure, blockquote';
  const textElements = 'p, span, a, em, strong, dd, dt, caption, figcaption';
  const images = 'img, svg, canvas, object';
  const unread = '[data-ventrix-hidden], .number, .notetitle, script, style, template, ' + images;
  const controls = 'a[href], button, input, select, textarea, summary';
  const restTime = 300;  // Milliseconds after which a pointer that does not move rests on what is under it.

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

  /** Whether something is left to read or to use. A generated number or label alone is nothing. */
  function hasText(element) {
    return [...element.childNodes].some(node => {
      const isElement = node.nodeType === Node.ELEMENT_NODE;
      return node.nodeType === Node.TEXT_NODE ? node.data.trim() !== '' :
        isElement && !node.matches(unread) && (node.matches('input, video, audio, iframe') || hasText(node));
    });
  }

  function hasImage(element) {
    return [...element.querySelectorAll(images)].some(image => !image.closest('[data-ventrix-hidden]'));
  }

  /** A cell keeps its place in the row, for readers of the screen and for assistive programs: only what is in it is hidden. */
  function emptyCell(cell) {
    const content = make('div', { className: 'ventrix-content' });
    content.setAttribute('data-ventrix-hidden', '');
    content.append(...cell.childNodes);
    cell.append(content);
  }

  function hideElement(element) {
    // If a cell reaches over several rows, a row that is taken out moves the cells of the next one.
    const isSpanned = element.matches('tr') && element.closest('table')?.querySelector('[rowspan]');
    element.setAttribute('data-ventrix-hidden', isSpanned ? 'row' : '');
  }

  function hide(element) {
    if (element.matches('td, th')) {
      emptyCell(element);
    } else {
      hideElement(element);
    }
    for (let above = element.parentElement; above && above !== document.body && !hasText(above); above = above.parentElement) {
      if (above.matches(containers) || (above.matches(textElements) && !hasImage(above))) {
        hideElement(above);
      }
    }
  }

  /** Takes out the columns that the filter left without text. */
  function hideColumns(table) {
    if (table.querySelector('[colspan], [rowspan]')) {
      return;
    }
    const rows = [...table.rows].filter(row => !row.closest('[data-ventrix-hidden]'));
    for (let column = 0; column < (rows[0]?.cells.length || 0); ++column) {
      const cells = rows.map(row => row.cells[column]).filter(Boolean);
      if (cells.some(cell => cell.querySelector(':scope > .ventrix-content')) && !cells.some(cell => hasText(cell) || hasImage(cell))) {
        cells.forEach(hideElement);
      }
    }
  }

  function filter(passages, off, status) {
    document.querySelectorAll('.ventrix-content').forEach(content => content.replaceWith(...content.childNodes));
    document.querySelectorAll('[data-ventrix-hidden]').forEach(element => element.removeAttribute('data-ventrix-hidden'));
    const excluded = passages.filter(passage => isExcluded(passage, off));
    excluded.forEach(passage => hide(passage.element));
    document.querySelectorAll('table:has(.ventrix-content)').forEach(hideColumns);
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

  function nameOfPlace(place) {
    return place.source + (place.line ? ', line ' + place.line : '');
  }

  function describe(passage) {
    const list = make('dl', { id: 'ventrix-description' });
    if (passage.file) {
      list.append(...row('file', nameOfPlace({ source: passage.file, line: passage.line })));
    }
    if (passage.xpath) {
      list.append(...row('place', passage.xpath));
    }
    if (passage.reusedBy) {
      list.append(...row('reused by', nameOfPlace(passage.reusedBy)));
    }
    passage.attributes.forEach(([name, value]) => list.append(...row(name, value)));
    return list;
  }

  function hintFor(element, isPinned) {
    const pin = element.matches(controls) ? 'Press Space' : 'Click the text or press Enter';
    return isPinned ? 'This panel stays. Escape closes it.' : pin + ' to keep this panel.';
  }

  /** The panel follows the pointer and the focus until it is pinned to a passage. */
  function makePanel(bar, button) {
    const node = make('div', { className: 'ventrix-panel', hidden: true });
    node.setAttribute('role', 'region');
    node.setAttribute('aria-label', 'Source of the passage');
    return { node, bar, button, hint: make('p', { className: 'ventrix-hint' }), shown: null, isPinned: false };
  }

  function actionsFor(passage, panel) {
    const actions = make('div', { className: 'ventrix-actions' });
    if (editorRoot && passage.file) {
      actions.append(make('a', { href: editorLink(passage.file, passage.line), textContent: 'Open in the editor' }));
    }
    // A click of the pointer leaves the page where it is.
    actions.append(make('button', { type: 'button', textContent: 'Close', onclick: event => closePanel(panel, event.detail > 0) }));
    for (const control of actions.children) {
      control.tabIndex = -1;  // At the end of the page it would be far from its passage; see moveFocus.
      control.setAttribute('aria-describedby', 'ventrix-description');
    }
    return actions;
  }

  function showPassage(panel, passage) {
    if (panel.isPinned || panel.shown === passage.element) {
      return;
    }
    panel.shown?.classList.remove('ventrix-shown');
    panel.shown = passage.element;
    panel.shown.classList.add('ventrix-shown');
    panel.hint.textContent = hintFor(passage.element, false);
    panel.node.replaceChildren(describe(passage), actionsFor(passage, panel), panel.hint);
    panel.node.hidden = false;
    // In the half of the window that the passage does not begin in.
    const isLow = passage.element.getBoundingClientRect().top > (window.innerHeight - panel.bar.offsetHeight) / 2;
    panel.node.classList.toggle('ventrix-above', isLow);
  }

  function closePanel(panel, preventScroll) {
    if (panel.node.contains(document.activeElement)) {
      panel.shown.focus({ preventScroll });
      if (document.activeElement !== panel.shown) {
        panel.button.focus();  // A filter has hidden the passage.
      }
    }
    panel.shown?.classList.remove('ventrix-shown', 'ventrix-pinned');
    delete document.documentElement.dataset.ventrixPinned;
    Object.assign(panel, { shown: null, isPinned: false });
    panel.node.hidden = true;
  }

  function pinPassage(panel, passage) {
    if (panel.shown !== passage.element) {
      closePanel(panel, true);
      showPassage(panel, passage);
    }
    panel.isPinned = true;
    panel.shown.classList.add('ventrix-pinned');
    panel.hint.textContent = hintFor(passage.element, true);
    document.documentElement.dataset.ventrixPinned = panel.node.matches('.ventrix-above') ? 'above' : 'below';
  }

  /** Lets Tab go from the pinned passage into its panel, and from there on to the next passage. */
  function moveFocus(event, panel) {
    const stops = [panel.shown, ...panel.node.querySelectorAll('a, button')];
    const next = stops.indexOf(document.activeElement) + (event.shiftKey ? -1 : 1);
    if (next === stops.length) {
      panel.shown.focus({ preventScroll: true });  // The browser moves on from here.
    } else if (next >= 0 && stops.includes(document.activeElement)) {
      event.preventDefault();
      stops[next].focus();
    }
  }

  function onKey(event, panel, byElement) {
    const passage = byElement.get(event.target);
    const isControl = passage?.element.matches(controls);
    // The browser does nothing for Space on a link but scroll.
    const pins = (event.key === 'Enter' && !isControl) || (event.key === ' ' && (!isControl || passage.element.matches('a')));
    if (event.key === 'Escape' && panel.isPinned) {
      closePanel(panel, false);
    } else if (event.key === 'Escape') {
      panel.button.click();
      panel.button.focus();
    } else if (passage && pins) {
      event.preventDefault();
      pinPassage(panel, passage);
      panel.node.querySelector('a, button').focus();
    } else if (event.key === 'Tab' && panel.isPinned) {
      moveFocus(event, panel);
    }
  }

  /** What the reader does while sources are shown, by event. */
  function makeListeners(panel, byElement, spoken) {
    const passageAt = target => byElement.get(target instanceof Element ? target.closest('.ventrix-focus') : null);
    let rest = 0;
    return {
      // A passage that the pointer only crosses, on its way to the panel, does not count.
      pointermove: event => {
        clearTimeout(rest);
        const passage = passageAt(event.target);
        rest = passage && setTimeout(() => panel.button.matches('[aria-pressed=true]') && showPassage(panel, passage), restTime);
      },
      focusin: event => {
        const passage = passageAt(event.target);
        if (passage && !panel.isPinned) {
          showPassage(panel, passage);
          spoken.textContent = passage.file ? nameOfPlace({ source: passage.file, line: passage.line }) : passage.xpath || '';
        }
      },
      click: event => {
        const passage = passageAt(event.target);
        // Links still lead to their pages, and text can be selected.
        if (passage && window.getSelection().isCollapsed) {
          pinPassage(panel, passage);
        }
      },
      keydown: event => onKey(event, panel, byElement),
    };
  }

  function makeSourceSwitch(passages, bar, spoken) {
    const button = make('button', { type: 'button', textContent: 'Show source' });
    const panel = makePanel(bar, button);
    const listeners = makeListeners(panel, new Map(passages.map(passage => [passage.element, passage])), spoken);
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
      for (const [name, listener] of Object.entries(listeners)) {
        document[isOn ? 'addEventListener' : 'removeEventListener'](name, listener);
      }
      spoken.textContent = isOn ? 'Tab goes through the texts. Enter keeps the source of one; on a link, Space does.' : '';
      closePanel(panel, true);
    };
    setOn(false);
    button.addEventListener('click', () => setOn(button.getAttribute('aria-pressed') !== 'true'));
    return [button, panel.node];
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
    const spoken = make('span', { className: 'ventrix-spoken' });
    spoken.setAttribute('role', 'status');
    const bar = make('div', { className: 'ventrix-bar' });
    bar.setAttribute('role', 'region');
    bar.setAttribute('aria-label', 'Carried data');
    const [button, panel] = makeSourceSwitch(passages, bar, spoken);
    bar.append(...makeChips(passages, status), button, status, spoken);
    document.body.append(panel, bar);
    // The bar covers the end of the window; neither the end of the page nor what has the focus may stay under it.
    new ResizeObserver(() => {
      document.documentElement.style.setProperty('--ventrix-bar-height', bar.offsetHeight + 'px');
      document.body.style.paddingBottom = bar.offsetHeight + 16 + 'px';
    }).observe(bar);
  }

  if (document.readyState === 'loading') {
    document.addEventListener('DOMContentLoaded', start);
  } else {
    start();
  }
})();
