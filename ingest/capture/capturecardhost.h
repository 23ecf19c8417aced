#pragma once

#include "core/records.h"

#include <QImage>
#include <QString>

#include <optional>

namespace kivo {

/**
 * What the capture flow needs of the capture card, which lives with the other surfaces: putting a
 * card on screen, and later giving a draft card its stored item. Each presentation is a session;
 * a bind that names an older session is late and must not touch the card now on screen.
 */
class CaptureCardHost
{
public:
    virtual ~CaptureCardHost();

    /** Puts a card on screen for `item` (a draft when `bound` is false) and returns its session. */
    virtual int present(const LibraryItem &item, const QImage &preview, bool bound) = 0;
    /**
     * The import behind a draft card ended, giving `itemId` or nothing; `session` is the one
     * `present` returned.
     */
    virtual void bind(const std::optional<QString> &itemId, int session) = 0;
    /**
     * The item of a draft card was just written, before anything is reloaded: a card still
     * deciding on it keeps it out of the grid from now on.
     */
    virtual void noteSavedItem(const QString &itemId, int session) = 0;
};

} // namespace kivo
