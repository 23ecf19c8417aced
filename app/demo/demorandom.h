#pragma once

#include <QList>
#include <QString>

#include <cstdint>

namespace kivo::demo {

/**
 * The demo's source of chance: small, fast and seeded, so one seed gives the same library every
 * time and every item can have a generator of its own (seed and index mixed) on any thread.
 */
class DemoRandom
{
public:
    explicit DemoRandom(std::uint64_t seed)
        : m_state(seed)
    {
    }

    /** A generator for one part of the work, independent of the order in which parts run. */
    [[nodiscard]] static DemoRandom forPart(std::uint64_t seed, std::uint64_t stream, std::uint64_t index)
    {
        DemoRandom mixer(seed ^ (stream * 0x9E3779B97F4A7C15ULL));
        mixer.m_state ^= mixer.next() + index * 0xD1B54A32D192ED03ULL;
        return DemoRandom(mixer.next());
    }

    /** splitmix64: one step of a 64-bit state, well mixed. */
    std::uint64_t next()
    {
        std::uint64_t z = (m_state += 0x9E3779B97F4A7C15ULL);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
        return z ^ (z >> 31);
    }

    /** In [0, 1). */
    double real() { return double(next() >> 11) * (1.0 / 9007199254740992.0); }
    double real(double low, double high) { return low + (high - low) * real(); }
    /** In [low, high], both included. */
    int between(int low, int high) { return low + int(next() % std::uint64_t(high - low + 1)); }
    bool chance(double probability) { return real() < probability; }

    template<typename T>
    const T &pick(const QList<T> &list)
    {
        return list.at(qsizetype(next() % std::uint64_t(list.size())));
    }

    /** An index chosen with the given weights. */
    int weighted(const QList<double> &weights)
    {
        double total = 0;
        for (const double weight : weights)
            total += weight;
        double at = real() * total;
        for (int i = 0; i < weights.size(); ++i) {
            at -= weights.at(i);
            if (at < 0)
                return i;
        }
        return int(weights.size()) - 1;
    }

    /** A lower-case UUID (version 4) drawn from this generator, so a seed also fixes the ids. */
    QString uuid()
    {
        const std::uint64_t high = (next() & 0xFFFFFFFFFFFF0FFFULL) | 0x0000000000004000ULL;
        const std::uint64_t low = (next() & 0x3FFFFFFFFFFFFFFFULL) | 0x8000000000000000ULL;
        const QString hex = QString::number(high, 16).rightJustified(16, u'0') + QString::number(low, 16).rightJustified(16, u'0');
        return hex.mid(0, 8) + u'-' + hex.mid(8, 4) + u'-' + hex.mid(12, 4) + u'-' + hex.mid(16, 4) + u'-' + hex.mid(20, 12);
    }

private:
    std::uint64_t m_state;
};

} // namespace kivo::demo
