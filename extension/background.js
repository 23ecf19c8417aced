// The extension's background: it alone talks to Kivo (a page's own requests would carry the
// page's origin, which the bridge refuses), makes previews, keeps the context menu's collections
// current, and runs the keyboard commands.
'use strict';

if (typeof KivoBridge === 'undefined' && typeof importScripts === 'function') {
  importScripts('bridge.js', 'previews.js');
}

const api = globalThis.browser ?? globalThis.chrome;
const MENU_ROOT = 'kivo';
const MENU_SAVE = 'kivo-save';
const MENU_INBOX = 'kivo-inbox';
const MENU_COLLECTION = 'kivo-collection:';
const MENU_CONTEXTS = ['image', 'video', 'link', 'page', 'selection'];
const MENU_COLLECTIONS_SHOWN = 12;

/** Where clips go when the user doesn't pick: '' lets Kivo decide (the capture card), 'inbox', or a collection id. */
async function destination() {
  const stored = await api.storage.local.get('destination');
  return typeof stored.destination === 'string' ? stored.destination : '';
}

async function withPreview(item, tab) {
  if (item.preview) return item;
  let preview = null;
  if (item.type === 'image') preview = await KivoPreviews.ofImage(item.url);
  else if (item.type === 'video') preview = await KivoPreviews.ofDataUrl(item.posterFrame);
  else if (item.type === 'page' && tab && tab.active) preview = await KivoPreviews.ofTab(tab.windowId);
  if (!preview && item.displaySrc && item.type !== 'image') preview = await KivoPreviews.ofImage(item.displaySrc);
  return preview ? {...item, preview} : item;
}

async function sendClip(items, tab, target) {
  const prepared = [];
  for (const item of items) prepared.push(await withPreview(item, tab));
  const chosen = target === undefined ? await destination() : target;
  const sent = await KivoBridge.clip(prepared, chosen);
  // A clip of several things may open a clip session in Kivo; the page shows it while it lasts.
  if (sent && items.length > 1) setTimeout(() => pollClipState(tab), 400);
  return sent;
}

async function pollClipState(tab) {
  const state = await KivoBridge.clipState();
  const active = Boolean(state && state.active);
  if (tab && tab.id !== undefined) {
    api.tabs.sendMessage(tab.id, {kind: 'clipState', active}).catch?.(() => {});
  }
  return active;
}

async function rebuildMenus() {
  const collections = await KivoBridge.collections();
  await new Promise((resolve) => api.contextMenus.removeAll(resolve));
  api.contextMenus.create({id: MENU_ROOT, title: 'Kivo', contexts: MENU_CONTEXTS});
  api.contextMenus.create({id: MENU_SAVE, parentId: MENU_ROOT, title: 'Save to Kivo', contexts: MENU_CONTEXTS});
  api.contextMenus.create({id: MENU_INBOX, parentId: MENU_ROOT, title: 'Save to Inbox', contexts: MENU_CONTEXTS});
  if (collections.length > 0) {
    api.contextMenus.create({id: 'kivo-separator', parentId: MENU_ROOT, type: 'separator', contexts: MENU_CONTEXTS});
  }
  for (const collection of collections.slice(0, MENU_COLLECTIONS_SHOWN)) {
    api.contextMenus.create({
      id: MENU_COLLECTION + collection.id,
      parentId: MENU_ROOT,
      title: `Save to \u201c${collection.name}\u201d`,
      contexts: MENU_CONTEXTS,
    });
  }
}

/** What a context-menu click was on, as a clip item. */
function itemFromMenu(info, tab) {
  const page = info.pageUrl || (tab && tab.url) || '';
  const title = (tab && tab.title) || '';
  if (info.selectionText) {
    return {type: 'selection', text: info.selectionText, url: page, sourceURL: page, title};
  }
  if (info.mediaType === 'image' && info.srcUrl) {
    return {type: 'image', url: info.srcUrl, sourceURL: page, title, displaySrc: info.srcUrl};
  }
  if (info.mediaType === 'video' && info.srcUrl) {
    return {type: 'video', url: info.srcUrl, sourceURL: page, title};
  }
  if (info.linkUrl) {
    return {type: 'link', url: info.linkUrl, sourceURL: page, title: info.linkText || title};
  }
  return {type: 'page', url: page, sourceURL: page, title};
}

async function selectedText(tabId) {
  try {
    const [result] = await api.scripting.executeScript({
      target: {tabId},
      func: () => String(window.getSelection() ?? ''),
    });
    return (result && result.result) || '';
  } catch (error) {
    return '';
  }
}

api.runtime.onInstalled.addListener(() => {
  rebuildMenus();
  api.alarms.create('kivo-poll', {periodInMinutes: 1});
});
api.runtime.onStartup?.addListener(() => rebuildMenus());

api.alarms.onAlarm.addListener((alarm) => {
  if (alarm.name !== 'kivo-poll') return;
  KivoBridge.clipState();
  rebuildMenus();
});

api.contextMenus.onClicked.addListener((info, tab) => {
  const item = itemFromMenu(info, tab);
  let target;
  if (info.menuItemId === MENU_INBOX) target = 'inbox';
  else if (String(info.menuItemId).startsWith(MENU_COLLECTION)) target = String(info.menuItemId).slice(MENU_COLLECTION.length);
  sendClip([item], tab, target);
});

api.commands?.onCommand.addListener(async (command, tab) => {
  tab = tab ?? (await api.tabs.query({active: true, currentWindow: true}))[0];
  if (!tab || !tab.url) return;
  if (command === 'save-page') {
    KivoBridge.capture({type: 'page', url: tab.url, sourceURL: tab.url, title: tab.title || ''});
  } else if (command === 'save-selection') {
    const text = await selectedText(tab.id);
    if (text) KivoBridge.capture({type: 'selection', text, url: tab.url, sourceURL: tab.url, title: tab.title || ''});
  }
});

api.runtime.onMessage.addListener((message, sender, sendResponse) => {
  const tab = sender.tab;
  const answer = async () => {
    switch (message && message.kind) {
      case 'config':
        return (await KivoBridge.clipperConfig()) ?? null;
      case 'clip':
        return {sent: await sendClip(message.items ?? [], tab)};
      case 'clipState':
        return {active: await pollClipState(tab)};
      case 'endClipMode':
        return {sent: await KivoBridge.clipMode(false)};
      case 'collections':
        rebuildMenus();
        return {collections: await KivoBridge.collections()};
      default:
        return null;
    }
  };
  answer().then(sendResponse, () => sendResponse(null));
  return true; // the answer comes later
});

// A background that was asleep starts here: make sure the menu exists and tell Kivo we are here.
rebuildMenus();
KivoBridge.clipState();
