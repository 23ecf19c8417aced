// Times the Store's reloads on a library of 100,000 items: the All list (with nothing written,
// after one item is written, and read in full), switching to collections of several sizes (also
// after the pointer has rested on the row, which reads the rows ahead), and the collections' own
// reload. Prints the median and the worst of each.
//   bench_store                 on a library of its own, seeded here
//   bench_store --library DIR   on an existing library (one made by `kivo demo`): the All list, the
//                               inbox and the largest collection. It marks items favourite and
//                               back, so give it a copy.
//   --all-only, --written-only  nothing but the All list's reload, read in full or after one item
//                               is written, with the trace lines, for a profiler

#include "core/appsettings.h"
#include "core/heaptrim.h"
#include "core/librarylocation.h"
#include "core/store.h"
#include "core/userdefaults.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRandomGenerator>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <ctime>
#include <functional>

using namespace Qt::StringLiterals;
using namespace kivo;

namespace {

constexpr int itemCount = 100000;
constexpr int rounds = 11;

struct Figures {
    double median = 0;
    double worst = 0;
    double cpuMedian = 0;
};

/** Time this thread spent running, which a busy machine's other work does not inflate. */
double threadCpuMs()
{
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

/** Lets the Store's worker reads finish and their answers arrive, as an idle window would between two clicks. */
void settle(qint64 ms = 400)
{
    QElapsedTimer idle;
    idle.start();
    while (idle.elapsed() < ms) {
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
}

Figures measure(const std::function<void()> &prepare, const std::function<void()> &work)
{
    QList<double> times;
    QList<double> cpu;
    for (int round = 0; round < rounds; ++round) {
        if (prepare)
            prepare();
        settle();
        QElapsedTimer timer;
        timer.start();
        const double cpuStart = threadCpuMs();
        work();
        cpu.append(threadCpuMs() - cpuStart);
        times.append(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    std::sort(cpu.begin(), cpu.end());
    return {times.at(times.size() / 2), times.last(), cpu.at(cpu.size() / 2)};
}

/** A write that changes nothing anyone sees, so that what was read before it counts as stale. */
void touchOneItem(Store &store)
{
    store.dbQueue()->write(
        [](Database &db) { db.execute(u"UPDATE item SET modifiedAt = modifiedAt WHERE rowid = 1"_s); });
}

/** Marks one item of the list favourite, or not, as a click on its heart does. */
void favouriteOneItem(Store &store)
{
    const QString id = store.items().at(store.items().size() / 2).id;
    store.dbQueue()->write([&](Database &db) {
        db.execute(u"UPDATE item SET favourite = 1 - favourite, modifiedAt = modifiedAt + 1 WHERE id = ?"_s, {id});
    });
}

/**
 * The same write through a connection of its own, as another program would make it: the Store
 * cannot know which rows it changed, so the next reload reads every row.
 */
void writeFromElsewhere(Store &store)
{
    const auto elsewhere = DatabaseQueue::openUnmigrated(store.dbQueue()->path());
    elsewhere->barrier([](Database &db) { db.executeScript(u"PRAGMA busy_timeout = 10000"_s); });
    elsewhere->write([](Database &db) { db.execute(u"UPDATE item SET modifiedAt = modifiedAt WHERE rowid = 1"_s); });
}

/**
 * For a profiler: nothing but the All list's reload, over and over, idle between as in the
 * measures; in full, or after one item is written.
 */
void reloadAllForAProfiler(Store &store, bool inFull)
{
    store.setChurnTrace(true);
    for (int round = 0; round < 20; ++round) {
        if (inFull)
            writeFromElsewhere(store);
        else
            favouriteOneItem(store);
        settle();
        store.reloadItems();
    }
}

/** The All list's reloads: with nothing written, after one item is written, and read in full. */
void measureAllReloads(Store &store, const std::function<void(const QString &, const Figures &)> &line)
{
    const QString all = u"reloadItems, All (%1 rows)"_s.arg(store.items().size());
    line(all + u", nothing written"_s, measure({}, [&] { store.reloadItems(); }));
    line(all + u", after one item is written"_s, measure([&] { favouriteOneItem(store); }, [&] { store.reloadItems(); }));
    line(all + u", read in full"_s, measure([&] { writeFromElsewhere(store); }, [&] { store.reloadItems(); }));
    // As after a write some seconds into browsing, when the read's memory has gone back.
    line(u"reloadItems, All, read in full after a pause of 3 s"_s, measure([&] {
        writeFromElsewhere(store);
        QThread::sleep(3);
    }, [&] { store.reloadItems(); }));
}

/** Items with the fields a real library has: titles, addresses, files, sizes, palettes. */
QList<QString> seed(DatabaseQueue &queue, const QList<QString> &collections, const QList<int> &collectionSizes)
{
    QList<QString> ids;
    ids.reserve(itemCount);
    auto *random = QRandomGenerator::global();
    const QStringList kinds{u"image"_s, u"image"_s, u"image"_s, u"video"_s, u"link"_s, u"text"_s, u"file"_s};
    queue.write([&](Database &db) {
        for (int i = 0; i < itemCount; ++i) {
            LibraryItem item;
            item.id = newIdentifier();
            item.kind = kinds.at(i % kinds.size());
            item.title = u"Saved thing number "_s + QString::number(i);
            item.sourceURL
                = u"https://example.org/articles/"_s + QString::number(i) + u"/a-rather-long-slug-for-the-page"_s;
            if (item.kind != u"link" && item.kind != u"text") {
                item.filePath = u"2024-"_s + QString::number(1 + i % 12).rightJustified(2, u'0') + u"/saved-thing-"_s
                    + QString::number(i) + u".png"_s;
                item.fileSize = 100000 + i;
                item.width = 800 + i % 400;
                item.height = 600 + i % 300;
                item.fileHash = QString::number(random->generate64(), 16).repeated(4);
            }
            item.colors = u"[\"#A03020\",\"#E0C080\",\"#203040\",\"#808080\",\"#F0F0F0\"]"_s;
            item.createdAt = item.addedAt = item.modifiedAt = 1.7e9 + i;
            item.enrichedAt = item.addedAt + 5;
            db.insert(item);
            ids.append(item.id);
        }
        int next = 0;
        for (qsizetype c = 0; c < collections.size(); ++c) {
            for (int n = 0; n < collectionSizes.at(c); ++n)
                db.insert(ItemCollection{ids.at((next++ * 7919) % itemCount), collections.at(c), 1.7e9 + next});
        }
    });
    return ids;
}

} // namespace

int main(int argc, char **argv)
{
    tuneHeapForLargeLists(); // as the application does
    QCoreApplication application(argc, argv);
    QTemporaryDir sandbox;
    QStandardPaths::setTestModeEnabled(true);
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, sandbox.path() + u"/config"_s);
    UserDefaults().setValue(u"libraryPath"_s, sandbox.path() + u"/Kivo Library"_s);
    QTextStream out(stdout);
    const auto line = [&](const QString &what, const Figures &figures) {
        out << what.leftJustified(62)
            << QString::asprintf("median %6.1f ms   worst %6.1f ms   cpu median %6.1f ms", figures.median,
                   figures.worst, figures.cpuMedian)
            << Qt::endl;
    };

    if (const qsizetype at = application.arguments().indexOf(u"--library"_s);
        at >= 0 && at + 1 < application.arguments().size()) {
        // The library is read, never written: the Store opens it as the window would.
        UserDefaults().setValue(u"libraryPath"_s, QDir(application.arguments().at(at + 1)).absolutePath());
        AppSettings settings;
        Store store(&settings);
        store.initialise();
        store.reloadAll();
        // The first load's counts and previews are read on workers; the first round would wait for them.
        settle(5000);
        QString largest;
        for (auto it = store.counts().cbegin(); it != store.counts().cend(); ++it) {
            const bool inbox = store.inboxCollection() && store.inboxCollection()->id == it.key();
            if (!inbox && (largest.isEmpty() || it.value() > store.counts().value(largest)))
                largest = it.key();
        }
        if (application.arguments().contains(u"--all-only"_s)
            || application.arguments().contains(u"--written-only"_s)) {
            reloadAllForAProfiler(store, application.arguments().contains(u"--all-only"_s));
            return 0;
        }
        measureAllReloads(store, line);
        const auto switchTo = [&](const QString &what, const SidebarSelection &selection) {
            line(what, measure([&] { store.setSelection(SidebarSelection::all()); },
                           [&] { store.setSelection(selection); }));
        };
        switchTo(u"switch All -> Inbox (%1)"_s.arg(store.counts().value(store.inboxCollection()->id)),
            SidebarSelection::inbox());
        switchTo(u"switch All -> largest collection (%1)"_s.arg(store.counts().value(largest)),
            SidebarSelection::collection(largest));
        line(u"switch largest collection -> All"_s,
            measure([&] { store.setSelection(SidebarSelection::collection(largest)); },
                [&] { store.setSelection(SidebarSelection::all()); }));
        line(u"switch largest collection -> All, after a write"_s,
            measure(
                [&] {
                    store.setSelection(SidebarSelection::collection(largest));
                    touchOneItem(store);
                },
                [&] { store.setSelection(SidebarSelection::all()); }));
        return 0;
    }

    AppSettings settings;
    Store store(&settings);
    store.initialise();
    QList<QString> collections;
    const QList<int> sizes{200, 2000, 20000};
    for (int size : sizes)
        collections.append(store.createCollection(u"Board of "_s + QString::number(size)));
    for (int i = 0; i < 40; ++i)
        collections.append(store.createCollection(u"Small board "_s + QString::number(i)));
    QList<int> allSizes = sizes;
    for (int i = 0; i < 40; ++i)
        allSizes.append(50);

    QElapsedTimer timer;
    timer.start();
    seed(*store.dbQueue(), collections, allSizes);
    out << "Seeded " << itemCount << " items in " << timer.elapsed() << " ms" << Qt::endl;
    store.reloadAll();
    settle(5000);
    if (application.arguments().contains(u"--keep"_s))
        QFile::copy(LibraryLocation::databasePath(), u"/tmp/benchlib/library.sqlite"_s);
    if (application.arguments().contains(u"--all-only"_s) || application.arguments().contains(u"--written-only"_s)) {
        reloadAllForAProfiler(store, application.arguments().contains(u"--all-only"_s));
        return 0;
    }
    if (application.arguments().contains(u"--collection-only"_s)) {
        // For a profiler: nothing but switching from All to the largest collection and back.
        for (int round = 0; round < 20; ++round) {
            store.setSelection(SidebarSelection::collection(collections.at(2)));
            store.setSelection(SidebarSelection::all());
        }
        return 0;
    }
    if (application.arguments().contains(u"--trace"_s)) {
        store.setChurnTrace(true);
        store.reloadAll();
        for (int round = 0; round < 3; ++round) {
            settle();
            store.setSelection(SidebarSelection::collection(collections.at(2)));
            settle();
            store.setSelection(SidebarSelection::all());
        }
        return 0;
    }

    measureAllReloads(store, line);
    line(u"reloadCollections (43 collections)"_s, measure({}, [&] { store.reloadCollections(); }));
    for (qsizetype c = 0; c < sizes.size(); ++c) {
        const QString id = collections.at(c);
        line(u"switch All -> collection of %1"_s.arg(sizes.at(c)),
            measure([&] { store.setSelection(SidebarSelection::all()); },
                [&] { store.setSelection(SidebarSelection::collection(id)); }));
    }
    line(u"switch All -> collection of 20000, after a write"_s,
        measure(
            [&] {
                store.setSelection(SidebarSelection::all());
                touchOneItem(store);
            },
            [&] { store.setSelection(SidebarSelection::collection(collections.at(2))); }));
    // As in the window: the pointer rests on the row (here for the 400 ms every round idles) before
    // the click, so the rows are read while it rests.
    line(u"switch All -> collection of 20000, pointed at first"_s,
        measure(
            [&] {
                store.setSelection(SidebarSelection::all());
                store.expectSelection(collections.at(2));
            },
            [&] { store.setSelection(SidebarSelection::collection(collections.at(2))); }));
    // Going back to a long list that was left keeps it while nothing is written; after a write it
    // is read again.
    line(u"switch collection of 200 -> All"_s,
        measure([&] { store.setSelection(SidebarSelection::collection(collections.first())); },
            [&] { store.setSelection(SidebarSelection::all()); }));
    line(u"switch collection of 200 -> All, after a write"_s,
        measure(
            [&] {
                store.setSelection(SidebarSelection::collection(collections.first()));
                touchOneItem(store);
            },
            [&] { store.setSelection(SidebarSelection::all()); }));
    line(u"switch All -> Images"_s,
        measure([&] { store.setSelection(SidebarSelection::all()); },
            [&] { store.setSelection(SidebarSelection::type(MediaTypeFilter::image)); }));
    store.setSelection(SidebarSelection::all());
    settings.setCardShowTags(true);
    line(u"reloadItems, All, with tag chips"_s, measure({}, [&] { store.reloadItems(); }));
    return 0;
}
