#include "app/demo/demovocabulary.h"

#include <QDateTime>

using namespace Qt::StringLiterals;

namespace kivo::demo::DemoVocabulary {

namespace {

const QStringList adjectives{
    u"quiet"_s, u"golden"_s, u"faded"_s, u"brutalist"_s, u"soft"_s, u"late"_s, u"early"_s, u"foggy"_s,
    u"bright"_s, u"hidden"_s, u"tiny"_s, u"endless"_s, u"rusty"_s, u"warm"_s, u"cold"_s, u"electric"_s,
    u"vintage"_s, u"modern"_s, u"wild"_s, u"paper"_s, u"velvet"_s, u"concrete"_s, u"pastel"_s, u"neon"_s,
};
const QStringList nouns{
    u"harbour"_s, u"stairwell"_s, u"kitchen"_s, u"garden"_s, u"facade"_s, u"market"_s, u"bridge"_s,
    u"lamp"_s, u"chair"_s, u"bookshelf"_s, u"window"_s, u"coastline"_s, u"forest"_s, u"studio"_s,
    u"poster"_s, u"typeface"_s, u"palette"_s, u"ceramics"_s, u"courtyard"_s, u"skyline"_s, u"tram"_s,
    u"greenhouse"_s, u"library"_s, u"balcony"_s, u"alley"_s, u"dune"_s, u"glacier"_s, u"orchard"_s,
};
const QStringList places{
    u"Lisbon"_s, u"Kyoto"_s, u"Oslo"_s, u"Mexico City"_s, u"Marseille"_s, u"Porto"_s, u"Seoul"_s,
    u"Copenhagen"_s, u"Tbilisi"_s, u"Valparaíso"_s, u"Reykjavík"_s, u"Naples"_s, u"Montréal"_s, u"Hanoi"_s,
};
const QStringList verbs{
    u"keeps"_s, u"changes"_s, u"shapes"_s, u"follows"_s, u"frames"_s, u"softens"_s, u"balances"_s,
    u"hides"_s, u"reveals"_s, u"repeats"_s, u"borrows"_s, u"explains"_s,
};
const QStringList objects{
    u"the light"_s, u"every corner"_s, u"the grid"_s, u"the whole layout"_s, u"our next release"_s,
    u"the colour of the walls"_s, u"the rhythm of the page"_s, u"the first draft"_s, u"the street"_s,
    u"a second reading"_s, u"the morning meeting"_s, u"the client's brief"_s, u"the type scale"_s,
};
const QStringList openers{
    u"Remember that"_s, u"I think"_s, u"Notice how"_s, u"Apparently"_s, u"In the end"_s, u"Somehow"_s,
    u"For the record,"_s, u"Honestly,"_s, u"According to the notes,"_s, u""_s, u""_s, u""_s,
};

QString capitalised(const QString &text)
{
    return text.isEmpty() ? text : text.at(0).toUpper() + text.mid(1);
}

QString slugWords(DemoRandom &random, int words)
{
    QStringList parts;
    for (int i = 0; i < words; ++i)
        parts.append(i % 2 ? random.pick(nouns) : random.pick(adjectives));
    return parts.join(u'-');
}

} // namespace

QString pictureTitle(DemoRandom &random)
{
    switch (random.between(0, 7)) {
    case 0:
        return u"IMG_%1"_s.arg(random.between(1000, 9999));
    case 1:
        return u"DSC%1"_s.arg(random.between(10000, 99999));
    case 2:
        return capitalised(random.pick(adjectives)) + u' ' + random.pick(nouns) + u", "_s + random.pick(places);
    case 3:
        return u"%1 ref %2"_s.arg(capitalised(random.pick(nouns))).arg(random.between(1, 40), 2, 10, QLatin1Char('0'));
    case 4:
        return capitalised(random.pick(adjectives)) + u' ' + random.pick(adjectives) + u' ' + random.pick(nouns);
    case 5:
        return u"moodboard-"_s + slugWords(random, 2);
    default:
        return capitalised(random.pick(adjectives)) + u' ' + random.pick(nouns);
    }
}

QString screenshotTitle(DemoRandom &random, double addedAt)
{
    const QDateTime at = QDateTime::fromSecsSinceEpoch(qint64(addedAt));
    return u"Screenshot from "_s + at.toString(u"yyyy-MM-dd hh-mm-ss"_s);
}

QStringList signLines(DemoRandom &random)
{
    static const QList<QStringList> signs{
        {u"NO PARKING"_s, u"ANY TIME"_s},
        {u"EXIT"_s},
        {u"OPEN"_s, u"24 HOURS"_s},
        {u"Platform 3"_s, u"Northbound"_s},
        {u"Rue de Rivoli"_s},
        {u"CAFÉ"_s, u"Espresso · Pastries"_s},
        {u"SALE"_s, u"50% OFF"_s},
        {u"SLOW"_s, u"CHILDREN PLAYING"_s},
        {u"Gate B12"_s},
        {u"FRESH BREAD"_s, u"Daily from 7am"_s},
        {u"STOP"_s},
        {u"Museum of Modern Art"_s, u"→ 300 m"_s},
        {u"BIKE LANE"_s},
        {u"Vintage Records"_s, u"Buy · Sell · Trade"_s},
        {u"PRIVATE"_s, u"KEEP OUT"_s},
        {u"Elm Street"_s},
        {u"HOTEL"_s},
        {u"Tram 28"_s, u"Martim Moniz"_s},
    };
    return random.pick(signs);
}

PosterWords posterWords(DemoRandom &random)
{
    static const QStringList titles{
        u"SUMMER JAZZ"_s, u"Design Week"_s, u"NEW WAVE"_s, u"Open Studios"_s, u"FILM NIGHT"_s,
        u"Typography Now"_s, u"BOTANICA"_s, u"The Long Table"_s, u"ECHOES"_s, u"Night Market"_s,
        u"MODERNISM"_s, u"Print Fair"_s, u"LOW TIDE"_s, u"Ceramics & Clay"_s,
    };
    static const QStringList subtitles{
        u"An evening of live music"_s, u"Talks, workshops and exhibitions"_s, u"Screenings under the stars"_s,
        u"Independent makers and printers"_s, u"A retrospective"_s, u"Food, drinks and records"_s,
    };
    static const QStringList months{u"MARCH"_s, u"APRIL"_s, u"MAY"_s, u"JUNE"_s, u"JULY"_s, u"SEPTEMBER"_s, u"OCTOBER"_s};
    const int day = random.between(1, 24);
    return {
        random.pick(titles),
        random.pick(subtitles),
        u"%1 — %2 %3 %4"_s.arg(day).arg(day + random.between(1, 4)).arg(random.pick(months)).arg(random.between(2022, 2025)),
        random.pick(places).toUpper(),
    };
}

QString sentence(DemoRandom &random)
{
    QString text = random.pick(openers);
    if (!text.isEmpty())
        text += u' ';
    text += u"the "_s + random.pick(adjectives) + u' ' + random.pick(nouns) + u' ' + random.pick(verbs) + u' '
        + random.pick(objects);
    if (random.chance(0.4))
        text += u" in "_s + random.pick(places);
    return capitalised(text) + u'.';
}

QString paragraph(DemoRandom &random, int sentences)
{
    QStringList parts;
    for (int i = 0; i < sentences; ++i)
        parts.append(sentence(random));
    return parts.join(u' ');
}

QStringList codeLines(DemoRandom &random, int count)
{
    static const QStringList lines{
        u"$ ninja -C build"_s, u"[42/118] Building CXX object core/store.cpp.o"_s,
        u"$ git status --short"_s, u" M surfaces/grid/CardGrid.qml"_s, u"$ ls items/2024-03"_s,
        u"const palette = extract(image, 5);"_s, u"for (const auto &item : items) {"_s,
        u"    reload(item.id);"_s, u"}"_s, u"SELECT id, title FROM item WHERE favourite = 1;"_s,
        u"def thumbnail(path, size=320):"_s, u"    return Image.open(path).resize(size)"_s,
        u"$ ffprobe -v error clip.mp4"_s, u"warning: unused variable 'count'"_s,
        u"All 214 tests passed (3.2 s)"_s, u"$ ssh studio.local"_s,
    };
    QStringList result;
    for (int i = 0; i < count; ++i)
        result.append(random.pick(lines));
    return result;
}

QString noteTitle(DemoRandom &random)
{
    static const QStringList titles{
        u"Ideas for the spring issue"_s, u"Things to pack"_s, u"Reading list"_s, u"Colour notes"_s,
        u"Meeting notes"_s, u"Gift ideas"_s, u"Recipe: lemon cake"_s, u"Studio to-do"_s,
        u"Quotes worth keeping"_s, u"Names for the project"_s, u"Plants for the balcony"_s,
    };
    return random.pick(titles) + (random.chance(0.3) ? u" ("_s + random.pick(places) + u')' : QString());
}

QString noteBody(DemoRandom &random)
{
    QStringList blocks;
    const int count = random.between(1, 4);
    for (int i = 0; i < count; ++i) {
        if (random.chance(0.35)) {
            QStringList list;
            for (int j = random.between(2, 5); j > 0; --j)
                list.append(u"- "_s + capitalised(random.pick(adjectives) + u' ' + random.pick(nouns)));
            blocks.append(list.join(u'\n'));
        } else {
            blocks.append(paragraph(random, random.between(1, 4)));
        }
    }
    return blocks.join(u"\n\n"_s);
}

DemoLink link(DemoRandom &random)
{
    const QString handle = random.pick(adjectives) + random.pick(nouns) + QString::number(random.between(1, 99));
    const QString slug = slugWords(random, random.between(2, 4));
    const QString words = capitalised(slug).replace(u'-', u' ');
    const qint64 status = qint64(random.next() % 900000000000000000ULL) + 1000000000000000000LL;
    switch (random.between(0, 13)) {
    case 0:
        return {u"https://x.com/%1/status/%2"_s.arg(handle).arg(status), u"%1 on X: \"%2\""_s.arg(handle, sentence(random))};
    case 1:
        return {u"https://twitter.com/%1/status/%2"_s.arg(handle).arg(status), u"%1 on Twitter"_s.arg(handle)};
    case 2:
        return {u"https://www.instagram.com/p/%1/"_s.arg(QString::number(random.next(), 36).left(11)),
                u"%1 on Instagram: %2"_s.arg(handle, words)};
    case 3:
        return {u"https://www.youtube.com/watch?v=%1"_s.arg(QString::number(random.next(), 36).left(11)), words + u" - YouTube"_s};
    case 4:
        return {u"https://github.com/%1/%2"_s.arg(handle, slug), u"GitHub - %1/%2"_s.arg(handle, slug)};
    case 5:
        return {u"https://en.wikipedia.org/wiki/%1"_s.arg(capitalised(random.pick(nouns))),
                capitalised(random.pick(nouns)) + u" - Wikipedia"_s};
    case 6:
        return {u"https://www.are.na/%1/%2"_s.arg(handle, slug), words + u" — Are.na"_s};
    case 7:
        return {u"https://dribbble.com/shots/%1-%2"_s.arg(random.between(1000000, 9999999)).arg(slug), words + u" by "_s + handle};
    case 8:
        return {u"https://www.behance.net/gallery/%1/%2"_s.arg(random.between(10000000, 99999999)).arg(slug), words + u" :: Behance"_s};
    case 9:
        return {u"https://medium.com/@%1/%2"_s.arg(handle, slug), words + u" | by "_s + handle + u" | Medium"_s};
    case 10:
        return {u"https://www.nytimes.com/%1/%2/arts/design/%3.html"_s.arg(random.between(2022, 2025)).arg(random.between(1, 12), 2, 10, QLatin1Char('0')).arg(slug),
                words + u" - The New York Times"_s};
    case 11:
        return {u"https://news.ycombinator.com/item?id=%1"_s.arg(random.between(30000000, 42000000)), words + u" | Hacker News"_s};
    case 12:
        return {u"https://www.pinterest.com/pin/%1/"_s.arg(qint64(random.next() % 900000000000000ULL)), words};
    default:
        return {u"https://%1.substack.com/p/%2"_s.arg(handle.toLower(), slug), words};
    }
}

QString pictureSource(DemoRandom &random)
{
    switch (random.between(0, 5)) {
    case 0:
        return u"https://www.pinterest.com/pin/%1/"_s.arg(qint64(random.next() % 900000000000000ULL));
    case 1:
        return u"https://unsplash.com/photos/%1"_s.arg(QString::number(random.next(), 36).left(11));
    case 2:
        return u"https://www.instagram.com/p/%1/"_s.arg(QString::number(random.next(), 36).left(11));
    case 3:
        return u"https://x.com/%1/status/%2"_s.arg(random.pick(nouns)).arg(qint64(random.next() % 900000000000000000ULL) + 1000000000000000000LL);
    default:
        return {};
    }
}

QString documentTitle(DemoRandom &random)
{
    static const QStringList kinds{u"Invoice"_s, u"Brief"_s, u"Floor plan"_s, u"Menu"_s, u"Contract"_s,
                                   u"Reading notes"_s, u"Boarding pass"_s, u"Catalogue"_s, u"Assets"_s};
    return random.pick(kinds) + u' ' + capitalised(random.pick(nouns)) + u' ' + QString::number(random.between(1, 48));
}

QString soundTitle(DemoRandom &random)
{
    static const QStringList kinds{u"Voice memo"_s, u"Field recording"_s, u"Demo"_s, u"Loop"_s, u"Interview"_s};
    return random.pick(kinds) + u" — "_s + random.pick(nouns) + u' ' + QString::number(random.between(1, 30));
}

QString videoTitle(DemoRandom &random)
{
    static const QStringList kinds{u"Clip"_s, u"Screen recording"_s, u"Timelapse"_s, u"Motion test"_s, u"Loop"_s};
    return random.pick(kinds) + u' ' + random.pick(adjectives) + u' ' + random.pick(nouns);
}

const QStringList &userTags()
{
    static const QStringList tags{
        u"inspiration"_s, u"typography"_s, u"to read"_s, u"architecture"_s, u"interiors"_s, u"branding"_s,
        u"colour"_s, u"travel"_s, u"recipes"_s, u"reference"_s, u"ui"_s, u"illustration"_s, u"posters"_s,
        u"photography"_s, u"gift ideas"_s, u"work"_s, u"later"_s, u"favourites of 2023"_s, u"print"_s,
        u"motion"_s, u"furniture"_s, u"packaging"_s, u"signage"_s, u"maps"_s,
    };
    return tags;
}

const QStringList &aiTags()
{
    static const QStringList tags{
        u"sky"_s, u"mountain"_s, u"text"_s, u"gradient"_s, u"abstract"_s, u"screenshot"_s, u"sign"_s,
        u"poster"_s, u"landscape"_s, u"sunset"_s, u"pattern"_s, u"geometric"_s, u"document"_s, u"night"_s,
        u"water"_s, u"minimal"_s, u"blue"_s, u"red"_s, u"green"_s, u"yellow"_s, u"circle"_s, u"outdoor"_s,
    };
    return tags;
}

const QList<CollectionName> &collections()
{
    static const QList<CollectionName> tree{
        {u"Inspiration"_s, u"sparkles"_s,
         {{u"Typography"_s, u"textformat"_s, {{u"Serifs"_s, {}, {}}, {u"Lettering"_s, {}, {}}}},
          {u"Colour"_s, u"paintpalette"_s, {{u"Warm palettes"_s, {}, {}}, {u"Neon"_s, {}, {}}}},
          {u"Posters"_s, u"doc.richtext"_s, {}}}},
        {u"Work"_s, u"briefcase"_s,
         {{u"Client: Atelier Nord"_s, {}, {{u"Moodboard"_s, {}, {}}, {u"Deliverables"_s, {}, {}}}},
          {u"Website redesign"_s, u"globe"_s, {{u"Screens"_s, {}, {}}}},
          {u"Pitch deck"_s, {}, {}}}},
        {u"Travel"_s, u"airplane"_s,
         {{u"Lisbon 2023"_s, {}, {{u"Food"_s, u"fork.knife"_s, {}}, {u"Streets"_s, {}, {}}}},
          {u"Kyoto"_s, {}, {}},
          {u"Wishlist"_s, u"star"_s, {}}}},
        {u"Home"_s, u"house"_s,
         {{u"Living room"_s, u"sofa"_s, {{u"Lamps"_s, u"lamp.desk"_s, {}}}}, {u"Garden"_s, u"leaf"_s, {}}}},
        {u"Reading"_s, u"book"_s, {{u"Essays"_s, {}, {}}, {u"Research"_s, u"magnifyingglass"_s, {{u"Papers"_s, {}, {}}}}}},
        {u"Recipes"_s, u"fork.knife"_s, {}},
        {u"Music"_s, u"music.note"_s, {{u"Records to find"_s, {}, {}}}},
    };
    return tree;
}

} // namespace kivo::demo::DemoVocabulary
