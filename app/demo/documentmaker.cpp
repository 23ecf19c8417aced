#include "app/demo/documentmaker.h"

#include "app/demo/demovocabulary.h"
#include "app/demo/filestamp.h"

#include <QBuffer>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QtEndian>

using namespace Qt::StringLiterals;

namespace kivo::demo::DocumentMaker {

namespace {

void append16(QByteArray &bytes, quint16 value)
{
    char raw[2];
    qToLittleEndian(value, raw);
    bytes.append(raw, 2);
}

void append32(QByteArray &bytes, quint32 value)
{
    char raw[4];
    qToLittleEndian(value, raw);
    bytes.append(raw, 4);
}

} // namespace

QByteArray pdf(const QString &title, DemoRandom &random)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    {
        QPdfWriter writer(&buffer);
        writer.setTitle(title);
        writer.setCreator(u"Kivo"_s);
        writer.setPageSize(random.chance(0.5) ? QPageSize(QPageSize::A4) : QPageSize(QPageSize::Letter));
        writer.setResolution(144);
        QPainter painter(&writer);
        const QRectF page = painter.viewport();
        const int pages = random.between(1, 2);
        for (int number = 0; number < pages; ++number) {
            if (number > 0)
                writer.newPage();
            QFont heading(u"DejaVu Serif"_s);
            heading.setPixelSize(int(page.height() / 28));
            heading.setBold(true);
            painter.setFont(heading);
            const double margin = page.width() * 0.1;
            painter.drawText(QRectF(margin, margin, page.width() - 2 * margin, page.height() / 12), Qt::AlignLeft | Qt::TextWordWrap,
                             number == 0 ? title : title + u" (continued)"_s);
            QFont body(u"DejaVu Sans"_s);
            body.setPixelSize(int(page.height() / 70));
            painter.setFont(body);
            QString text;
            for (int i = random.between(3, 6); i > 0; --i)
                text += DemoVocabulary::paragraph(random, random.between(3, 6)) + u"\n\n"_s;
            painter.drawText(QRectF(margin, margin + page.height() / 10, page.width() - 2 * margin, page.height() * 0.75),
                             Qt::AlignLeft | Qt::TextWordWrap, text);
            painter.setPen(QColor(90, 90, 90));
            painter.drawText(QRectF(0, page.height() - margin / 2, page.width(), margin / 3), Qt::AlignCenter,
                             QString::number(number + 1));
        }
    }
    return bytes;
}

QByteArray zip(const QList<ZipEntry> &entries)
{
    QByteArray archive;
    QByteArray directory;
    // 1 January 2024, midday, in the archive's DOS date and time.
    const quint16 dosTime = quint16(12 << 11);
    const quint16 dosDate = quint16(((2024 - 1980) << 9) | (1 << 5) | 1);
    for (const ZipEntry &entry : entries) {
        const QByteArray name = entry.name.toUtf8();
        const quint32 crc = FileStamp::crc32(entry.bytes.constData(), entry.bytes.size());
        const quint32 offset = quint32(archive.size());
        const auto header = [&](QByteArray &out, bool central) {
            append32(out, central ? 0x02014b50 : 0x04034b50);
            if (central)
                append16(out, 20); // made by
            append16(out, 20);     // needed to extract
            append16(out, 0x0800); // names in UTF-8
            append16(out, 0);      // stored
            append16(out, dosTime);
            append16(out, dosDate);
            append32(out, crc);
            append32(out, quint32(entry.bytes.size()));
            append32(out, quint32(entry.bytes.size()));
            append16(out, quint16(name.size()));
            append16(out, 0); // extra
            if (central) {
                append16(out, 0); // comment
                append16(out, 0); // disk
                append16(out, 0); // internal attributes
                append32(out, 0); // external attributes
                append32(out, offset);
            }
            out.append(name);
        };
        header(archive, false);
        archive.append(entry.bytes);
        header(directory, true);
    }
    const quint32 directoryOffset = quint32(archive.size());
    archive.append(directory);
    append32(archive, 0x06054b50);
    append16(archive, 0);
    append16(archive, 0);
    append16(archive, quint16(entries.size()));
    append16(archive, quint16(entries.size()));
    append32(archive, quint32(directory.size()));
    append32(archive, directoryOffset);
    append16(archive, 0);
    return archive;
}

QByteArray zipOfNotes(const QString &title, DemoRandom &random)
{
    QList<ZipEntry> entries;
    QStringList listing;
    for (int i = random.between(2, 5); i > 0; --i) {
        const QString stem = DemoVocabulary::noteTitle(random).toLower().replace(u' ', u'-').remove(u'(').remove(u')').remove(u':');
        const QString name = u"notes/%1-%2.txt"_s.arg(i).arg(stem);
        entries.append({name, DemoVocabulary::noteBody(random).toUtf8()});
        listing.append(name);
    }
    entries.prepend({u"README.txt"_s, (title + u"\n\n"_s + listing.join(u'\n') + u'\n').toUtf8()});
    return zip(entries);
}

} // namespace kivo::demo::DocumentMaker
