/* The pages of the built-in toolkit are complete without this script. It scrolls long contents to the place of the page. */
(function () {
  'use strict';

  const contents = document.getElementById('ventrix-contents');
  const current = contents?.querySelector('[aria-current]');
  if (current && contents.scrollHeight > contents.clientHeight) {
    contents.scrollTop = current.offsetTop - contents.clientHeight / 3;
  }
})();
