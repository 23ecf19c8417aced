'use strict';

// Where the clipper sends things: Kivo's choice (the capture card), the inbox, or one collection.
(async () => {
  const api = globalThis.browser ?? globalThis.chrome;
  const targets = document.getElementById('targets');
  const stored = await api.storage.local.get('destination');
  let chosen = typeof stored.destination === 'string' ? stored.destination : '';

  function row(id, name, count) {
    const element = document.createElement('div');
    element.className = 'row' + (id === chosen ? ' chosen' : '');
    element.textContent = name;
    if (count !== undefined) {
      const number = document.createElement('span');
      number.className = 'count';
      number.textContent = count;
      element.appendChild(number);
    }
    element.addEventListener('click', async () => {
      chosen = id;
      await api.storage.local.set({destination: id});
      render(lastCollections);
    });
    targets.appendChild(element);
  }

  let lastCollections = [];
  function render(collections) {
    lastCollections = collections;
    targets.replaceChildren();
    row('', 'Ask with the capture card');
    row('inbox', 'Inbox');
    for (const collection of collections) row(collection.id, collection.name, collection.count);
  }

  const [config, collections] = await Promise.all([KivoBridge.clipperConfig(), KivoBridge.collections()]);
  document.getElementById('dot').classList.toggle('on', Boolean(config));
  document.getElementById('status').textContent = config ? 'Connected to Kivo' : 'Kivo is not running';
  if (config && config.key) {
    const keys = [...(config.mods ?? []).map((m) => m[0].toUpperCase() + m.slice(1)), config.key.toUpperCase()];
    document.getElementById('hint').textContent = `Clip with ${keys.join('+')}`;
  } else if (config) {
    document.getElementById('hint').textContent = 'Set a clipper key in Kivo';
  }
  render(collections);
  document.getElementById('settings').addEventListener('click', (event) => {
    event.preventDefault();
    api.runtime.openOptionsPage();
  });
})();
