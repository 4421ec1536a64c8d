#include <mdtools/table.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#if defined(HAVE_GSL)
#include <gsl/gsl_interp.h>
#endif
#if defined(HAVE_BOOST)
#include <math.h> // the next one needs the global isnan
#include <boost/math/interpolators/pchip.hpp>
#endif

namespace {

// Points from 0 to 1, and places to look up where the points are.
struct Curve {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> places;
};

enum Spacing { Even, Uneven, Clustered };

Curve makeCurve(std::size_t count, Spacing spacing)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Curve curve;
    for (std::size_t i = 0; i < count; ++i) {
        const double even = static_cast<double>(i) / static_cast<double>(count - 1);
        // Clustered points crowd together at the beginning by a thousandth of the range.
        curve.x.push_back(spacing == Even     ? even
                          : spacing == Uneven ? unit(random)
                          : i + 1 < count     ? even / 1000.0
                                              : 1.0);
        curve.y.push_back(unit(random));
    }
    std::sort(curve.x.begin(), curve.x.end());
    const double range = spacing == Clustered ? 1e-3 : 1.0;
    for (int i = 0; i < 65536; ++i) {
        const double place = curve.x.front() + unit(random) * range;
        curve.places.push_back(std::min(place, curve.x.back()));
    }
    return curve;
}

const Curve& curveOf(const benchmark::State& state)
{
    static std::vector<std::pair<std::pair<std::int64_t, std::int64_t>, Curve>> curves;
    const auto key = std::make_pair(state.range(0), state.range(1));
    for (const auto& curve : curves) {
        if (curve.first == key)
            return curve.second;
    }
    curves.reserve(64);
    curves.emplace_back(key, makeCurve(static_cast<std::size_t>(state.range(0)),
                                       static_cast<Spacing>(state.range(1))));
    return curves.back().second;
}

template <class Lookup>
void lookUp(benchmark::State& state, const Curve& curve, Lookup lookup)
{
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(lookup(curve.places[i++ % curve.places.size()]));
}

void tableLookup(benchmark::State& state)
{
    const Curve& curve = curveOf(state);
    Tools::Table table;
    for (std::size_t i = 0; i < curve.x.size(); ++i)
        table.addPair(curve.x[i], curve.y[i]);
    table.sort();
    lookUp(state, curve, [&table](double x) { return table.getValue(x); });
}

void lowerBoundLookup(benchmark::State& state)
{
    const Curve& curve = curveOf(state);
    lookUp(state, curve, [&curve](double x) {
        if (x <= curve.x.front())
            return curve.y.front();
        const auto upper = std::lower_bound(curve.x.begin(), curve.x.end(), x);
        if (upper == curve.x.end())
            return curve.y.back();
        const auto i = static_cast<std::size_t>(upper - curve.x.begin());
        return curve.y[i - 1] + (curve.y[i] - curve.y[i - 1]) * (x - curve.x[i - 1]) /
                                    (curve.x[i] - curve.x[i - 1]);
    });
}

void sizes(benchmark::internal::Benchmark* rows)
{
    rows->ArgNames({"points", "spacing"});
    for (const int count : {10, 1000, 1000000}) {
        for (const Spacing spacing : {Even, Uneven, Clustered})
            rows->Args({count, spacing});
    }
}

BENCHMARK(tableLookup)->Name("getValue/mdtools")->Apply(sizes);
BENCHMARK(lowerBoundLookup)->Name("getValue/lower_bound")->Apply(sizes);

#if defined(HAVE_GSL)

void gslLookup(benchmark::State& state)
{
    const Curve& curve = curveOf(state);
    gsl_interp* const interpolation = gsl_interp_alloc(gsl_interp_linear, curve.x.size());
    gsl_interp_init(interpolation, curve.x.data(), curve.y.data(), curve.x.size());
    gsl_interp_accel* const accelerator = gsl_interp_accel_alloc();
    lookUp(state, curve, [&](double x) {
        return gsl_interp_eval(interpolation, curve.x.data(), curve.y.data(), x, accelerator);
    });
    gsl_interp_accel_free(accelerator);
    gsl_interp_free(interpolation);
}

BENCHMARK(gslLookup)->Name("getValue/gsl")->Apply(sizes);

#endif

#if defined(HAVE_BOOST)

void pchipLookup(benchmark::State& state)
{
    const Curve& curve = curveOf(state);
    auto x = curve.x;
    auto y = curve.y;
    const boost::math::interpolators::pchip<std::vector<double>> interpolator(std::move(x),
                                                                              std::move(y));
    lookUp(state, curve, [&interpolator](double place) { return interpolator(place); });
}

BENCHMARK(pchipLookup)->Name("getValue/pchip")->Apply(sizes);

#endif

}
