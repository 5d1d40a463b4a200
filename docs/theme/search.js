// Finds sections of the manual whose title or text has every word that was typed. `manualIndex` (index.js) holds one
// entry a section: page, heading, address, text. Works from a file as well as from a server.
(function () {
  'use strict';
  const box = document.getElementById('search');
  const results = document.getElementById('results');
  const up = document.body.dataset.up;
  const most = 20;

  // How well an entry fits: a word that is the heading weighs most, then one in the heading, in the page, in the text.
  function score(entry, words) {
    const heading = entry.heading.toLowerCase();
    const page = entry.page.toLowerCase();
    const text = entry.text.toLowerCase();
    let sum = 0;
    for (const word of words) {
      if (heading === word) sum += 100;
      else if (heading.startsWith(word)) sum += 40;
      else if (heading.includes(word)) sum += 20;
      else if (page.includes(word)) sum += 10;
      else if (text.includes(word)) sum += 1;
      else return 0;
    }
    return sum;
  }

  // The piece of the text around the first word found in it.
  function excerpt(text, words) {
    const lower = text.toLowerCase();
    const places = words.map((word) => lower.indexOf(word)).filter((at) => at >= 0);
    const start = Math.max(0, (places.length ? Math.min(...places) : 0) - 40);
    return (start ? '…' : '') + text.slice(start, start + 140) + (text.length > start + 140 ? '…' : '');
  }

  function show() {
    const words = box.value.toLowerCase().split(/[\s.]+/).filter(Boolean);
    results.hidden = words.length === 0;
    results.replaceChildren();
    const found = manualIndex.map((entry) => ({ entry, score: score(entry, words) }))
      .filter((item) => item.score > 0).sort((a, b) => b.score - a.score).slice(0, most);
    for (const { entry } of found) {
      const link = document.createElement('a');
      link.href = up + entry.address;
      link.textContent = entry.heading === entry.page ? entry.page : entry.page + ' · ' + entry.heading;
      const text = document.createElement('small');
      text.textContent = excerpt(entry.text, words);
      link.append(text);
      results.append(link);
    }
    if (!found.length) {
      const none = document.createElement('p');
      none.textContent = 'Nothing found.';
      results.append(none);
    }
  }

  function close() {
    results.hidden = true;
  }

  function choose(step) {
    const links = [...results.querySelectorAll('a')];
    const now = links.findIndex((link) => link.classList.contains('chosen'));
    const next = links[Math.min(links.length - 1, Math.max(0, now + step))];
    links.forEach((link) => link.classList.toggle('chosen', link === next));
    if (next) next.scrollIntoView({ block: 'nearest' });
  }

  box.addEventListener('input', show);
  box.addEventListener('focus', show);
  box.addEventListener('keydown', (event) => {
    if (event.key === 'Escape') close();
    else if (event.key === 'ArrowDown') choose(1);
    else if (event.key === 'ArrowUp') choose(-1);
    else if (event.key === 'Enter') (results.querySelector('a.chosen') || results.querySelector('a'))?.click();
  });
  results.addEventListener('click', close);
  document.addEventListener('click', (event) => {
    if (event.target !== box && !results.contains(event.target)) close();
  });
  document.addEventListener('keydown', (event) => {
    if (event.key === '/' && event.target !== box) { box.focus(); event.preventDefault(); }
  });

  // An address with ?q=words opens with their results.
  const asked = new URLSearchParams(location.search).get('q');
  if (asked) { box.value = asked; show(); }
})();
