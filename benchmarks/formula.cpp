#include <mdtools/formula_interpreter.h>
#include <mdtools/table.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <string>
#include <vector>

#if defined(HAVE_GSL)
#include <gsl/gsl_interp.h>
#endif
#if defined(HAVE_BOOST)
// pchip.hpp needs the global isnan.
#include <math.h>

#include <boost/math/interpolators/pchip.hpp>
#include <boost/spirit/home/x3.hpp>
#endif
#if defined(HAVE_MUPARSER)
#include <muParser.h>
#endif

namespace {

// What users type into fields for numbers.
const std::vector<std::string>& formulas()
{
    static const std::vector<std::string> texts = {
        "2*(3,5+1)/4", "12,5",           "4*0,25*0,25", "1,35*12,4+1,5*3,2",
        "(2+3)*4",     "7850*9,81/1000", "0,3*0,5",     "2*3,14*12/7",
        "3",           "100/(2*3)"};
    return texts;
}

template <class Evaluate>
void evaluateFormulas(benchmark::State& state, Evaluate evaluate)
{
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(evaluate(formulas()[i++ % formulas().size()]));
}

void interpreterFormula(benchmark::State& state)
{
    const Tools::FormulaInterpreter interpreter;
    evaluateFormulas(state, [&](const std::string& text) { return interpreter.value(text); });
}

BENCHMARK(interpreterFormula)->Name("formula/mdtools");

#if defined(HAVE_BOOST)

// A grammar of the same operators, with blanks and decimal commas.
namespace Grammar {

namespace x3 = boost::spirit::x3;

struct RealPolicies : x3::real_policies<double> {
    template <class Iterator>
    static bool parse_dot(Iterator& first, const Iterator& last)
    {
        if (first == last || (*first != '.' && *first != ','))
            return false;
        ++first;
        return true;
    }
};

const x3::real_parser<double, RealPolicies> number{};
const x3::rule<class Sum, double> sum = "sum";
const x3::rule<class Product, double> product = "product";
const x3::rule<class Factor, double> factor = "factor";

const auto set = [](auto& context) { x3::_val(context) = x3::_attr(context); };
const auto add = [](auto& context) { x3::_val(context) += x3::_attr(context); };
const auto subtract = [](auto& context) { x3::_val(context) -= x3::_attr(context); };
const auto multiply = [](auto& context) { x3::_val(context) *= x3::_attr(context); };
const auto divide = [](auto& context) { x3::_val(context) /= x3::_attr(context); };
const auto negate = [](auto& context) { x3::_val(context) = -x3::_attr(context); };

const auto sum_def = product[set] >> *(('+' >> product[add]) | ('-' >> product[subtract]));
const auto product_def = factor[set] >> *(('*' >> factor[multiply]) | ('/' >> factor[divide]));
const auto factor_def = number[set] | ('(' >> sum[set] >> ')') | ('-' >> factor[negate]);

BOOST_SPIRIT_DEFINE(sum, product, factor)

}

void spiritFormula(benchmark::State& state)
{
    evaluateFormulas(state, [](const std::string& text) {
        double value = 0.0;
        Grammar::x3::phrase_parse(text.begin(), text.end(), Grammar::sum, Grammar::x3::space,
                                  value);
        return value;
    });
}

BENCHMARK(spiritFormula)->Name("formula/spirit");

#endif

#if defined(HAVE_MUPARSER)

void muParserFormula(benchmark::State& state)
{
    mu::Parser parser;
    parser.SetArgSep(';');
    parser.SetDecSep(',');
    evaluateFormulas(state, [&parser](const std::string& text) {
        parser.SetExpr(text);
        return parser.Eval();
    });
}

BENCHMARK(muParserFormula)->Name("formula/muparser");

#endif

// Points from 0 to 1, and places to look up where the points are.
struct Curve {
    std::vector<double> x;
    std::vector<double> y;
    std::vector<double> places;
};

constexpr std::size_t PlaceCount = 65536;

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
    for (std::size_t i = 0; i < PlaceCount; ++i) {
        const double place = curve.x.front() + unit(random) * range;
        curve.places.push_back(std::min(place, curve.x.back()));
    }
    return curve;
}

template <Spacing spacing>
const Curve& curveOf(const benchmark::State& state)
{
    static std::map<std::int64_t, Curve> curves;
    Curve& curve = curves[state.range(0)];
    if (curve.x.empty())
        curve = makeCurve(static_cast<std::size_t>(state.range(0)), spacing);
    return curve;
}

template <class Lookup>
void lookUp(benchmark::State& state, const Curve& curve, Lookup lookup)
{
    const double* const places = curve.places.data();
    std::size_t i = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(lookup(places[i++ % PlaceCount]));
}

template <Spacing spacing>
void tableLookup(benchmark::State& state)
{
    const Curve& curve = curveOf<spacing>(state);
    Tools::Table table;
    for (std::size_t i = 0; i < curve.x.size(); ++i)
        table.addPair(curve.x[i], curve.y[i]);
    table.sort();
    lookUp(state, curve, [&table](double x) { return table.getValue(x); });
}

template <Spacing spacing>
void lowerBoundLookup(benchmark::State& state)
{
    const Curve& curve = curveOf<spacing>(state);
    lookUp(state, curve, [&curve](double x) {
        if (x <= curve.x.front())
            return curve.y.front();
        const auto upper = std::lower_bound(curve.x.begin(), curve.x.end(), x);
        if (upper == curve.x.end())
            return curve.y.back();
        const auto i = static_cast<std::size_t>(upper - curve.x.begin());
        return curve.y[i - 1] +
               (curve.y[i] - curve.y[i - 1]) * (x - curve.x[i - 1]) / (curve.x[i] - curve.x[i - 1]);
    });
}

void sizes(benchmark::internal::Benchmark* rows)
{
    rows->Arg(10)->Arg(1000)->Arg(1000000);
}

BENCHMARK(tableLookup<Even>)->Name("getValue/mdtools")->Apply(sizes);
BENCHMARK(tableLookup<Uneven>)->Name("getValueUneven/mdtools")->Apply(sizes);
BENCHMARK(tableLookup<Clustered>)->Name("getValueClustered/mdtools")->Apply(sizes);
BENCHMARK(lowerBoundLookup<Even>)->Name("getValue/lower_bound")->Apply(sizes);
BENCHMARK(lowerBoundLookup<Uneven>)->Name("getValueUneven/lower_bound")->Apply(sizes);
BENCHMARK(lowerBoundLookup<Clustered>)->Name("getValueClustered/lower_bound")->Apply(sizes);

#if defined(HAVE_GSL)

template <Spacing spacing>
void gslLookup(benchmark::State& state)
{
    const Curve& curve = curveOf<spacing>(state);
    gsl_interp* const interpolation = gsl_interp_alloc(gsl_interp_linear, curve.x.size());
    gsl_interp_init(interpolation, curve.x.data(), curve.y.data(), curve.x.size());
    gsl_interp_accel* const accelerator = gsl_interp_accel_alloc();
    lookUp(state, curve, [&](double x) {
        return gsl_interp_eval(interpolation, curve.x.data(), curve.y.data(), x, accelerator);
    });
    gsl_interp_accel_free(accelerator);
    gsl_interp_free(interpolation);
}

BENCHMARK(gslLookup<Even>)->Name("getValue/gsl")->Apply(sizes);
BENCHMARK(gslLookup<Uneven>)->Name("getValueUneven/gsl")->Apply(sizes);
BENCHMARK(gslLookup<Clustered>)->Name("getValueClustered/gsl")->Apply(sizes);

#endif

#if defined(HAVE_BOOST)

template <Spacing spacing>
void pchipLookup(benchmark::State& state)
{
    const Curve& curve = curveOf<spacing>(state);
    auto x = curve.x;
    auto y = curve.y;
    const boost::math::interpolators::pchip<std::vector<double>> interpolator(std::move(x),
                                                                              std::move(y));
    lookUp(state, curve, [&interpolator](double place) { return interpolator(place); });
}

BENCHMARK(pchipLookup<Even>)->Name("getValue/pchip")->Apply(sizes);
BENCHMARK(pchipLookup<Uneven>)->Name("getValueUneven/pchip")->Apply(sizes);
BENCHMARK(pchipLookup<Clustered>)->Name("getValueClustered/pchip")->Apply(sizes);

#endif

}
