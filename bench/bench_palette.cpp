// Palette extraction from 1024-pixel bitmaps, the size enrichment decodes pictures to. Wall time:
// the image scaler may spread one image over a thread pool, so CPU time of the caller says little.
//   taskset -c 0 build/bench/bench_palette

#include "bench/benchimages.h"
#include "understanding/colorpalette.h"

#include <benchmark/benchmark.h>

namespace {

void extract(benchmark::State &state, const QImage &image)
{
    for (auto _ : state) {
        QStringList palette = kivo::ColorPalette::extractPalette(image, 5);
        benchmark::DoNotOptimize(palette);
    }
    state.SetItemsProcessed(state.iterations());
}

void opaque1024x768(benchmark::State &state)
{
    static const QImage image = kivo::bench::photoLike(1024, 768, false);
    extract(state, image);
}

void opaque1024x1024(benchmark::State &state)
{
    static const QImage image = kivo::bench::photoLike(1024, 1024, false);
    extract(state, image);
}

// A PNG with an alpha channel decodes unpremultiplied; extraction has to premultiply it first.
void withAlpha1024x1024(benchmark::State &state)
{
    static const QImage image = kivo::bench::photoLike(1024, 1024, true);
    extract(state, image);
}

} // namespace

BENCHMARK(opaque1024x768)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(opaque1024x1024)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(withAlpha1024x1024)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_MAIN();
