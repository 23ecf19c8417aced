// What is under the pointer, as a clip item: the picture, video or link the user points at, the
// selected text, or else the page itself. Sites often lay transparent layers over their pictures,
// so every element stacked at the point is looked at, not only the top one.
/* exported KivoPointer */
'use strict';

var KivoPointer = (() => {
  const LINK_TEXT_LIMIT = 200;

  function pageTitle() {
    return document.title || location.hostname || location.href;
  }

  function absolute(url) {
    try {
      return new URL(url, document.baseURI).href;
    } catch (error) {
      return '';
    }
  }

  function backgroundImage(element) {
    const style = getComputedStyle(element);
    const match = /url\(["']?([^"')]+)["']?\)/.exec(style.backgroundImage || '');
    return match ? absolute(match[1]) : '';
  }

  /** A frame of a playing or paused video; null when the video is from another site (a tainted canvas). */
  function videoFrame(video) {
    try {
      if (!video.videoWidth || !video.videoHeight) return null;
      const scale = Math.min(1, 960 / Math.max(video.videoWidth, video.videoHeight));
      const canvas = document.createElement('canvas');
      canvas.width = Math.round(video.videoWidth * scale);
      canvas.height = Math.round(video.videoHeight * scale);
      canvas.getContext('2d').drawImage(video, 0, 0, canvas.width, canvas.height);
      return canvas.toDataURL('image/jpeg', 0.85);
    } catch (error) {
      return null;
    }
  }

  function imageItem(image) {
    const url = absolute(image.currentSrc || image.src);
    if (!url) return null;
    return {
      type: 'image',
      url,
      sourceURL: location.href,
      title: (image.alt || image.title || pageTitle()).trim(),
      displaySrc: url,
    };
  }

  function videoItem(video) {
    const source = video.currentSrc || video.src || (video.querySelector('source') || {}).src || '';
    const fetchable = /^https?:/i.test(source);
    const item = {
      type: 'video',
      // A stream (blob:, MediaSource) has no address Kivo could fetch: the page stands for it.
      url: fetchable ? absolute(source) : location.href,
      sourceURL: location.href,
      title: pageTitle(),
    };
    const frame = videoFrame(video);
    if (frame) item.posterFrame = frame;
    if (video.poster) item.displaySrc = absolute(video.poster);
    return item;
  }

  function linkItem(anchor) {
    const url = absolute(anchor.href);
    if (!/^https?:/i.test(url)) return null;
    const text = (anchor.innerText || anchor.title || '').trim().slice(0, LINK_TEXT_LIMIT);
    return {type: 'link', url, sourceURL: location.href, title: text || url};
  }

  function pageItem() {
    const item = {type: 'page', url: location.href, sourceURL: location.href, title: pageTitle()};
    const image = document.querySelector('meta[property="og:image"], meta[name="twitter:image"]');
    if (image && image.content) item.displaySrc = absolute(image.content);
    return item;
  }

  function selectionItem() {
    const selection = window.getSelection();
    const text = selection ? String(selection).trim() : '';
    if (!text) return null;
    return {type: 'selection', text, url: location.href, sourceURL: location.href, title: pageTitle()};
  }

  /** The thing at an element itself or one of its near ancestors; null when there is none. */
  function itemOfElement(element) {
    for (let node = element, depth = 0; node && node.nodeType === 1 && depth < 6; node = node.parentElement, depth++) {
      const tag = node.tagName;
      if (tag === 'IMG') return imageItem(node);
      if (tag === 'VIDEO') return videoItem(node);
      if (tag === 'PICTURE') {
        const image = node.querySelector('img');
        if (image) return imageItem(image);
      }
      if (tag === 'A' && node.href) return linkItem(node);
      if (depth === 0) {
        const background = backgroundImage(node);
        if (background) return {type: 'image', url: background, sourceURL: location.href, title: pageTitle(), displaySrc: background};
      }
    }
    return null;
  }

  /** The clip item for the point (x, y) in the viewport; the selection wins when there is one. */
  function itemAt(x, y) {
    const selected = selectionItem();
    if (selected) return selected;
    const stack = Number.isFinite(x) && Number.isFinite(y) ? document.elementsFromPoint(x, y) : [];
    // Media anywhere in the stack first: a transparent layer over a picture still means the picture.
    for (const element of stack) {
      if (element.tagName === 'IMG' || element.tagName === 'VIDEO') return itemOfElement(element);
    }
    for (const element of stack) {
      const item = itemOfElement(element);
      if (item) return item;
    }
    return pageItem();
  }

  /** The element whose outline shows what would be clipped. */
  function elementAt(x, y) {
    const stack = Number.isFinite(x) && Number.isFinite(y) ? document.elementsFromPoint(x, y) : [];
    return stack.find((e) => e.tagName === 'IMG' || e.tagName === 'VIDEO') ?? stack.find((e) => e.closest('a[href]'))?.closest('a[href]') ?? null;
  }

  return {itemAt, elementAt, itemOfElement};
})();
