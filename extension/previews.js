// Small previews for the capture card and the pending clips: a picture fetched by the extension
// (which may read any site, unlike the page) or a shot of the visible tab, scaled down and sent
// as a data address.
/* exported KivoPreviews */
'use strict';

var KivoPreviews = (() => {
  const api = globalThis.browser ?? globalThis.chrome;
  const MAX_SIDE = 480;
  const MAX_BYTES = 15 * 1024 * 1024;

  function base64(buffer) {
    const bytes = new Uint8Array(buffer);
    let text = '';
    for (let i = 0; i < bytes.length; i += 0x8000) {
      text += String.fromCharCode.apply(null, bytes.subarray(i, i + 0x8000));
    }
    return btoa(text);
  }

  async function scaledDataUrl(blob) {
    const bitmap = await createImageBitmap(blob);
    const scale = Math.min(1, MAX_SIDE / Math.max(bitmap.width, bitmap.height));
    const width = Math.max(1, Math.round(bitmap.width * scale));
    const height = Math.max(1, Math.round(bitmap.height * scale));
    const canvas = new OffscreenCanvas(width, height);
    canvas.getContext('2d').drawImage(bitmap, 0, 0, width, height);
    bitmap.close?.();
    const scaled = await canvas.convertToBlob({type: 'image/jpeg', quality: 0.82});
    return `data:image/jpeg;base64,${base64(await scaled.arrayBuffer())}`;
  }

  /** A preview of the picture at `url`, or null when it can't be fetched or read. */
  async function ofImage(url) {
    if (!/^(https?|data|file):/i.test(url ?? '')) return null;
    try {
      const response = await fetch(url, {credentials: 'include'});
      if (!response.ok) return null;
      const blob = await response.blob();
      if (blob.size > MAX_BYTES) return null;
      return await scaledDataUrl(blob);
    } catch (error) {
      return null;
    }
  }

  /** A preview from a data address already made (a video frame), scaled down. */
  async function ofDataUrl(dataUrl) {
    if (!/^data:image/i.test(dataUrl ?? '')) return null;
    try {
      return await scaledDataUrl(await (await fetch(dataUrl)).blob());
    } catch (error) {
      return null;
    }
  }

  /** A shot of what the tab shows, for clips of a whole page. */
  async function ofTab(windowId) {
    try {
      const shot = await api.tabs.captureVisibleTab(windowId, {format: 'jpeg', quality: 70});
      return await ofDataUrl(shot);
    } catch (error) {
      return null;
    }
  }

  return {ofImage, ofDataUrl, ofTab};
})();
