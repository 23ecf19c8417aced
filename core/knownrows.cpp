#include "core/knownrows.h"

#include "core/database.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kivo {

KnownRows::KnownRows(QList<LibraryItem> rows) : m_rows(std::move(rows)) {}

const LibraryItem *KnownRows::match(const Row &row)
{
    if (m_rows.isEmpty())
        return nullptr;
    if (m_next < m_rows.size() && m_rows.at(m_next).isReadFrom(row))
        return &m_rows.at(m_next++);
    // Not where the last row left off: an item came, went, moved or changed.
    const qsizetype at = indexOf(row);
    if (at < 0)
        return nullptr;
    // Even a changed row tells where the next one is likely to be.
    m_next = at + 1;
    return m_rows.at(at).isReadFrom(row) ? &m_rows.at(at) : nullptr;
}

QList<LibraryItem> KnownRows::takeRows()
{
    m_byId.clear();
    m_indexed = false;
    m_next = 0;
    return std::exchange(m_rows, {});
}

qsizetype KnownRows::indexOf(const Row &row)
{
    if (!m_indexed) {
        m_byId.reserve(m_rows.size());
        for (qsizetype i = 0; i < m_rows.size(); ++i)
            m_byId.insert(QStringView(m_rows.at(i).id), i);
        m_indexed = true;
    }
    const QByteArrayView id = row.utf8("id");
    // Ids are plain ASCII: widened on the stack, they are looked up without making a string.
    std::array<char16_t, 64> wide{};
    if (id.size() <= qsizetype(wide.size())) {
        bool ascii = true;
        for (qsizetype i = 0; i < id.size() && ascii; ++i) {
            ascii = uchar(id[i]) < 0x80;
            wide[size_t(i)] = char16_t(uchar(id[i]));
        }
        if (ascii)
            return m_byId.value(QStringView(wide.data(), id.size()), -1);
    }
    const QString decoded = QString::fromUtf8(id);
    return m_byId.value(QStringView(decoded), -1);
}

QList<LibraryItem> readItemRows(
    Database &db, const QString &sql, const QVariantList &arguments, qsizetype expected, KnownRows &known)
{
    const LibraryItem *const knownFirst = known.rows().constData();
    QList<LibraryItem> rows;
    // While every row is the known one at the same place, nothing is copied: an unchanged list
    // comes back as the known list itself, which also compares equal to it at a glance.
    qsizetype inPlace = 0;
    bool diverged = false;
    db.forEach(sql, arguments, [&](const Row &row) {
        const LibraryItem *found = known.match(row);
        if (!diverged) {
            if (found && found == knownFirst + inPlace) {
                ++inPlace;
                return;
            }
            diverged = true;
            rows.reserve(std::max(expected, inPlace + 1));
            rows.append(known.rows().first(inPlace));
        }
        rows.append(found ? *found : LibraryItem::fromRow(row));
    });
    if (!diverged)
        return inPlace == known.rows().size() ? known.rows() : known.rows().first(inPlace);
    return rows;
}

} // namespace kivo
