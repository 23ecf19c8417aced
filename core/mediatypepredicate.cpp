#include "core/mediatypepredicate.h"

#include <QStringList>

using namespace Qt::StringLiterals;

namespace kivo {

const QStringList &audioExtensions()
{
    static const QStringList extensions{u"mp3"_s, u"m4a"_s, u"wav"_s, u"aac"_s, u"flac"_s, u"ogg"_s, u"aiff"_s};
    return extensions;
}

QString mediaTypePredicate(MediaTypeFilter filter)
{
    switch (filter) {
    case MediaTypeFilter::image:
        return u"i.kind = 'image'"_s;
    case MediaTypeFilter::videos:
        return u"i.kind = 'video'"_s;
    case MediaTypeFilter::links:
        return u"i.kind = 'link'"_s;
    case MediaTypeFilter::documents: {
        QStringList notAudio;
        for (const QString &extension : audioExtensions())
            notAudio.append(u"LOWER(i.filePath) NOT LIKE '%."_s + extension + u'\'');
        return u"((i.kind = 'file' AND "_s + notAudio.join(u" AND "_s) + u") OR i.kind = 'text')"_s;
    }
    case MediaTypeFilter::tweets: {
        // X's current domain and its former one, each bare and with "www.".
        QStringList hosts;
        for (const QString &host : {u"x.com"_s, u"www.x.com"_s, u"twitter.com"_s, u"www.twitter.com"_s})
            hosts.append(u"i.sourceURL LIKE '%//"_s + host + u"/%'"_s);
        return u'(' + hosts.join(u" OR "_s) + u')';
    }
    case MediaTypeFilter::instagram:
        return u"i.sourceURL LIKE '%instagram.com/%'"_s;
    case MediaTypeFilter::audio: {
        QStringList audio;
        for (const QString &extension : audioExtensions())
            audio.append(u"LOWER(i.filePath) LIKE '%."_s + extension + u'\'');
        return u'(' + audio.join(u" OR "_s) + u')';
    }
    }
    return u"0"_s;
}

} // namespace kivo
