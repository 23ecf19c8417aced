#include "ingest/bridge/httpparser.h"

#include <QStringDecoder>

#include <limits>
#include <optional>

using namespace Qt::StringLiterals;

namespace kivo::HttpParser {

namespace {

ParseResult invalid()
{
    ParseResult result;
    result.kind = ParseResult::Kind::invalid;
    return result;
}

// Blanks are spaces and tabs; line ends never reach here, as the head is split at CR LF first.
QString trimmedOfBlanks(const QString &text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && (text.at(begin) == u' ' || text.at(begin) == u'\t'))
        ++begin;
    while (end > begin && (text.at(end - 1) == u' ' || text.at(end - 1) == u'\t'))
        --end;
    return text.mid(begin, end - begin);
}

std::optional<QString> strictUtf8(QByteArrayView bytes)
{
    // Stateless and without BOM stripping: the head is decoded exactly as sent, or refused.
    QStringDecoder decoder(
        QStringDecoder::Utf8, QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

} // namespace

std::optional<qint64> integerValue(const QString &text)
{
    qsizetype index = 0;
    bool negative = false;
    if (index < text.size() && (text.at(index) == u'+' || text.at(index) == u'-')) {
        negative = text.at(index) == u'-';
        ++index;
    }
    if (index == text.size())
        return std::nullopt;
    qint64 value = 0;
    for (; index < text.size(); ++index) {
        const char16_t c = text.at(index).unicode();
        if (c < u'0' || c > u'9')
            return std::nullopt;
        const int digit = c - u'0';
        // Accumulate on the negative side so that the smallest 64-bit value still fits.
        if (value < (std::numeric_limits<qint64>::min() + digit) / 10)
            return std::nullopt;
        value = value * 10 - digit;
    }
    if (negative)
        return value;
    if (value == std::numeric_limits<qint64>::min())
        return std::nullopt;
    return -value;
}

ParseResult parse(QByteArrayView buffer)
{
    const qsizetype headEnd = buffer.indexOf(QByteArrayView("\r\n\r\n"));
    if (headEnd < 0) {
        if (buffer.size() > headLimit)
            return invalid();
        return {};
    }
    const std::optional<QString> head = strictUtf8(buffer.first(headEnd));
    if (!head || head->isEmpty())
        return invalid();

    const QStringList lines = head->split(u"\r\n"_s);
    const QStringList requestLine = lines.constFirst().split(u' ', Qt::SkipEmptyParts);
    if (requestLine.size() < 2)
        return invalid();

    HTTPRequest request;
    request.method = requestLine.at(0);
    request.path = requestLine.at(1);
    for (qsizetype index = 1; index < lines.size(); ++index) {
        const QString &line = lines.at(index);
        const qsizetype colon = line.indexOf(u':');
        if (colon < 0)
            continue;
        request.headers.insert(trimmedOfBlanks(line.first(colon)).toLower(), trimmedOfBlanks(line.sliced(colon + 1)));
    }
    // Chunked (or any other coded) bodies are refused outright rather than half understood.
    if (request.headers.contains(u"transfer-encoding"_s))
        return invalid();

    qint64 length = 0;
    const auto declared = request.headers.constFind(u"content-length"_s);
    if (declared != request.headers.constEnd())
        length = integerValue(*declared).value_or(0);
    if (length < 0 || length > bodyLimit)
        return invalid();

    const qsizetype bodyStart = headEnd + 4;
    ParseResult result;
    result.awaitedSize = bodyStart + qsizetype(length);
    if (buffer.size() - bodyStart < length)
        return result;
    request.body = buffer.sliced(bodyStart, qsizetype(length)).toByteArray();
    result.kind = ParseResult::Kind::complete;
    result.request = std::move(request);
    return result;
}

} // namespace kivo::HttpParser
