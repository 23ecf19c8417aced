#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace kivo {

/** One thing the extension clipped: a picture, a video, a page, a selection. Absent fields are empty. */
struct ClipItem {
    QString type; // "image", "video", "link", "page", "selection" or "text"
    QString url;
    QString sourceURL;
    QString title;
    QString text;
    QString preview; // "data:image..." address of a small preview
    QString displaySrc;
    QString posterFrame;

    friend bool operator==(const ClipItem &, const ClipItem &) = default;
};

/** A `POST /clip` body: what was clipped, in order, and where it goes when the extension says so. */
struct ClipRequest {
    QList<ClipItem> items;
    bool toInbox = false; // `target` was "inbox"
    std::optional<QString> collectionId;

    /** Reads a body; nothing when it is not a JSON object with a non-empty `items` array of objects. */
    [[nodiscard]] static std::optional<ClipRequest> fromBody(const QByteArray &body);
};

/** A `POST /capture` body: one thing saved by a keyboard command in the browser. */
struct CaptureRequest {
    QString type; // "image", "link", "page" or "selection"
    QString url;
    QString sourceURL;
    QString title;
    QString text;

    /** Reads a body; nothing when it is not a JSON object with a string `type`. */
    [[nodiscard]] static std::optional<CaptureRequest> fromBody(const QByteArray &body);
};

/** Whether a `POST /clipmode` body ends the clip session: only an `active` that is present and false does. */
[[nodiscard]] bool clipModeEndsSession(const QByteArray &body);

/** The extension's own clipping hotkey, as the user set it in Kivo. */
struct ClipperConfig {
    QString key;
    bool shift = false;
    bool alt = false;
    bool ctrl = false;
    bool meta = false;
    bool optionHold = false;

    /** `{"key":..., "mods":[...], "optionHold":...}`, the modifiers in the order shift, alt, ctrl, meta. */
    [[nodiscard]] QByteArray toJson() const;
};

/** Kivo's keyboard shortcuts as text, for the extension's settings page to show. */
struct ShortcutSheet {
    QString clipper;
    bool clipperOptionHold = false;
    QString screenshot;
    QString launcher;
    QString savePage;
    QString shelf;
    bool dropRingRequiresModifier = true;
    QString dropRingModifier; // one glyph, "" when no modifier is required
    bool dropRingBrowsersOnly = false;

    [[nodiscard]] QByteArray toJson() const;
};

/** A collection as the extension lists it for filing: the inbox is never one of them. */
struct CollectionSummary {
    QString id;
    QString name;
    qint64 count = 0;

    friend bool operator==(const CollectionSummary &, const CollectionSummary &) = default;
};

/** `{"collections":[{"count":...,"id":...,"name":...}, ...]}` */
[[nodiscard]] QByteArray collectionsJson(const QList<CollectionSummary> &collections);

/** The hand-made `GET /clipstate` body. */
[[nodiscard]] QByteArray clipStateJson(bool active);

} // namespace kivo
