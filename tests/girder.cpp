#include "girder/envelope_run.h"
#include "girder/interruption.h"
#include "girder/progress_bar.h"
#include "girder/solver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <csignal>
#include <random>
#include <sstream>
#include <thread>

namespace {

using namespace Girder;

constexpr double Stiffness = 2.5e6;

Model girderOf(const std::vector<double>& lengths, Support left, Support right, double load)
{
    Model model;
    for (const double length : lengths)
        model.spans.push_back({length, {{0.0, Stiffness}}, {load, {}}});
    model.supports.assign(lengths.size() + 1, Support::Interior);
    model.supports.front() = left;
    model.supports.back() = right;
    return model;
}

// One load of 80 kN on a simple beam of 10 m, 4 m from the left end.
Model beamUnderForce(Support left, Support right)
{
    Model model = girderOf({10.0}, left, right, 0.0);
    model.spans[0].loads.points = {{4.0, 80.0}};
    return model;
}

Model randomGirder(std::mt19937& random)
{
    std::uniform_real_distribution<double> share(0.0, 1.0);
    std::uniform_int_distribution<int> count(1, 8);
    const auto end = [&] { return share(random) < 0.5 ? Support::Hinged : Support::Fixed; };
    Model model =
        girderOf(std::vector<double>(static_cast<std::size_t>(count(random))), end(), end(), 0.0);
    for (Span& span : model.spans) {
        span.length = 1.0 + 40.0 * share(random);
        span.stiffness.clear();
        for (int i = count(random); i > 0; --i)
            span.stiffness.push_back({span.length / i, std::exp(8.0 + 8.0 * share(random))});
        span.loads.uniform = 100.0 * share(random) - 30.0;
        for (int i = count(random); i > 1; --i)
            span.loads.points.push_back(
                {span.length * share(random), 500.0 * share(random) - 99.0});
    }
    // Forces over a support, on one another.
    model.spans[0].loads.points.push_back({0.0, 10.0});
    model.spans[0].loads.points.push_back({model.spans[0].length, 20.0});
    model.spans[0].loads.points.push_back({model.spans[0].length, 30.0});
    return model;
}

double weakest(const Span& span)
{
    double least = span.stiffness.front().value;
    for (const StiffnessPoint& point : span.stiffness)
        least = std::min(least, point.value);
    return least;
}

void expectNear(double value, double expected)
{
    EXPECT_NEAR(value, expected, 1e-11 * std::max(1.0, std::abs(expected)));
}

void expectExtreme(const Extreme& extreme, double value, std::size_t span, double position)
{
    expectNear(extreme.value, value);
    EXPECT_EQ(extreme.span, span);
    EXPECT_NEAR(extreme.position, position, 1e-7);
}

TEST(GirderSolver, closedSolutions)
{
    constexpr auto H = Support::Hinged;
    constexpr auto F = Support::Fixed;
    constexpr double q = 12.0;
    constexpr double L = 8.0;
    constexpr double M = q * L * L;
    struct Case {
        const char* name;
        std::vector<double> lengths;
        Support left, right;
        std::vector<double> moments, reactions;
    };
    const Case cases[] = {
        {"one span", {L}, H, H, {0, 0}, {q * L / 2, q * L / 2}},
        {"two equal spans",
         {L, L},
         H,
         H,
         {0, -M / 8, 0},
         {0.375 * q * L, 1.25 * q * L, 0.375 * q * L}},
        {"three equal spans",
         {L, L, L},
         H,
         H,
         {0, -M / 10, -M / 10, 0},
         {0.4 * q * L, 1.1 * q * L, 1.1 * q * L, 0.4 * q * L}},
        {"fixed ends", {L}, F, F, {-M / 12, -M / 12}, {q * L / 2, q * L / 2}},
        {"left end fixed", {L}, F, H, {-M / 8, 0}, {0.625 * q * L, 0.375 * q * L}},
        {"two spans, fixed ends",
         {L, L},
         F,
         F,
         {-M / 12, -M / 12, -M / 12},
         {q * L / 2, q * L, q * L / 2}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const Model model = girderOf(c.lengths, c.left, c.right, q);
        const Solution solution = solve(model);
        for (std::size_t i = 0; i < c.moments.size(); ++i) {
            expectNear(solution.supportMoments[i], c.moments[i]);
            expectNear(solution.reactions[i], c.reactions[i]);
        }
    }
}

TEST(GirderSolver, extremesLieBetweenStations)
{
    constexpr double q = 12.0;
    constexpr double L = 8.0;
    const Extremes simple = solve(girderOf({L}, Support::Hinged, Support::Hinged, q)).extremes();
    expectExtreme(simple.moment.maximum(), q * L * L / 8, 0, L / 2);
    expectExtreme(simple.deflection.maximum(), 5 * q * std::pow(L, 4) / (384 * Stiffness), 0,
                  L / 2);
    expectExtreme(simple.shear.minimum(), -q * L / 2, 0, L);

    // The field moment of two spans lies at 3/8 of the outer half, its deflection at 0.4215 L.
    const Extremes two = solve(girderOf({L, L}, Support::Hinged, Support::Hinged, q)).extremes();
    const double flat = L * (1 + std::sqrt(33.0)) / 16;
    expectExtreme(two.moment.maximum(), 9 * q * L * L / 128, 0, 0.375 * L);
    expectExtreme(two.moment.minimum(), -q * L * L / 8, 0, L);
    expectExtreme(two.shear.maximum(), 0.625 * q * L, 1, 0.0);
    EXPECT_EQ(two.deflection.maximum().span, 0U);
    EXPECT_NEAR(two.deflection.maximum().position, flat, 1e-7);
    EXPECT_EQ(two.deflection.minimum().value, 0.0);

    // A force off centre: deflection greatest at sqrt((L2 - a2) / 3) from the far end.
    const Extremes force = solve(beamUnderForce(Support::Hinged, Support::Hinged)).extremes();
    const double x = std::sqrt((100.0 - 16.0) / 3.0);
    expectExtreme(force.moment.maximum(), 192.0, 0, 4.0);
    expectExtreme(force.shear.maximum(), 48.0, 0, 0.0);
    expectExtreme(force.shear.minimum(), -32.0, 0, 4.0);
    expectExtreme(force.deflection.maximum(), 80.0 * 4.0 * x * x * x / (30.0 * Stiffness), 0,
                  10.0 - x);
    const Solution fixed = solve(beamUnderForce(Support::Fixed, Support::Fixed));
    expectNear(fixed.supportMoments[0], -80.0 * 4 * 36 / 100);
    expectNear(fixed.supportMoments[1], -80.0 * 16 * 6 / 100);
}

// Clamped at both ends, the stiffness doubling straight from left to right: all integrals end in
// logarithms of 2.
TEST(GirderSolver, haunchedSpan)
{
    constexpr double q = 12.0;
    constexpr double L = 8.0;
    Model model = girderOf({L}, Support::Fixed, Support::Fixed, q);
    model.spans[0].stiffness = {{0.0, Stiffness}, {L, 2 * Stiffness}};
    const double ln2 = std::log(2.0);
    const double left = 4 * ln2 - 2.5, across = 1.5 - 2 * ln2, right = ln2 - 0.5;
    const double leftLoad = q * L * L / 2 * (17.0 / 6.0 - 4 * ln2);
    const double rightLoad = q * L * L / 2 * (2 * ln2 - 4.0 / 3.0);
    const double determinant = left * right - across * across;
    const Solution solution = solve(model);
    expectNear(solution.supportMoments[0], -(leftLoad * right - rightLoad * across) / determinant);
    expectNear(solution.supportMoments[1], -(rightLoad * left - leftLoad * across) / determinant);

    // Level beyond its points, and a table of one value is a constant.
    const Model constant = girderOf({L}, Support::Fixed, Support::Hinged, q);
    model = constant;
    model.spans[0].stiffness = {{3.0, Stiffness}, {4.0, Stiffness}};
    expectNear(solve(model).supportMoments[0], solve(constant).supportMoments[0]);
}

// Equilibrium and the continuity of the tangent together have one solution only.
TEST(GirderSolver, randomModelsAreInEquilibriumAndContinuous)
{
    std::mt19937 random(7);
    for (int run = 0; run < 300; ++run) {
        SCOPED_TRACE(run);
        const Model model = randomGirder(random);
        const Solution solution = solve(model);
        double forces = 0.0, moments = 0.0, magnitude = 0.0, start = 0.0;
        for (std::size_t i = 0; i < model.spans.size(); ++i) {
            const Span& span = model.spans[i];
            const double total = span.loads.uniform * span.length;
            forces += total - solution.reactions[i];
            moments += total * (start + span.length / 2) - solution.reactions[i] * start;
            magnitude += std::abs(total);
            for (const PointLoad& load : span.loads.points) {
                forces += load.force;
                moments += load.force * (start + load.position);
                magnitude += std::abs(load.force);
            }
            start += span.length;
        }
        forces -= solution.reactions.back();
        moments -= solution.reactions.back() * start;
        moments += solution.supportMoments.front() - solution.supportMoments.back();
        EXPECT_NEAR(forces, 0.0, 1e-12 * magnitude);
        EXPECT_NEAR(moments, 0.0, 1e-12 * magnitude * start);

        for (std::size_t i = 0; i <= model.spans.size(); ++i) {
            const double left =
                i == 0 ? 0.0 : solution.spans[i - 1].slope(model.spans[i - 1].length);
            const double right = i == model.spans.size() ? 0.0 : solution.spans[i].slope(0.0);
            const double scale = std::abs(left) + std::abs(right) + 1e-3;
            if (model.supports[i] == Support::Hinged)
                EXPECT_EQ(solution.supportMoments[i], 0.0);
            else
                EXPECT_NEAR(left, right, 1e-10 * scale) << "support " << i;
        }
    }
}

// The curves belong together: each is the derivative of the next, and no station exceeds an
// extreme.
TEST(GirderSolver, curvesFitTheirDerivativesAndExtremes)
{
    std::mt19937 random(11);
    for (int run = 0; run < 100; ++run) {
        SCOPED_TRACE(run);
        const Model model = randomGirder(random);
        const Solution solution = solve(model);
        const Extremes extremes = solution.extremes();
        for (std::size_t i = 0; i < model.spans.size(); ++i) {
            const SpanLine& line = solution.spans[i];
            const double h = line.length() * 1e-4;
            for (double x = 1.5 * h; x < line.length() - h; x += line.length() / 57) {
                const auto within = [&](double value, const Range& range) {
                    const double slack = 1e-9 * (1e-9 + std::abs(value));
                    return value >= range.minimum().value - slack &&
                           value <= range.maximum().value + slack;
                };
                EXPECT_TRUE(within(line.moment(x), extremes.moment));
                EXPECT_TRUE(within(line.shear(x), extremes.shear));
                EXPECT_TRUE(within(line.deflection(x), extremes.deflection));
                const double rate = (line.deflection(x + h) - line.deflection(x - h)) / (2 * h);
                const double scale =
                    line.length() / weakest(model.spans[i]) *
                    (std::abs(extremes.moment.minimum().value) + extremes.moment.maximum().value);
                EXPECT_NEAR(rate, line.slope(x), 1e-6 * scale);
                const double jump =
                    line.shear(x + h) - line.shear(x - h) + 2 * h * model.spans[i].loads.uniform;
                const double growth = (line.moment(x + h) - line.moment(x - h)) / (2 * h);
                EXPECT_NEAR(growth, line.shear(x), std::abs(jump) + 1e-6);
            }
        }
    }
}

// What one unit axle does at each position, against the influence lines of simple formulas.
TEST(GirderEnvelope, influenceLines)
{
    constexpr double L = 10.0;
    constexpr int Stations = 5, Positions = 201;
    Model beam = girderOf({L}, Support::Hinged, Support::Hinged, 50.0);
    Model two = girderOf({L, L}, Support::Hinged, Support::Hinged, 50.0);
    beam.train = two.train = {{0.0, 1.0}};
    const EnvelopeSolver ofBeam(beam, Stations, Positions);
    const EnvelopeSolver ofTwo(two, Stations, Positions);
    for (int position = 0; position < Positions; ++position) {
        Envelope one = ofBeam.makeEmpty();
        ofBeam.add(position, one);
        const double a = L * position / (Positions - 1);
        const auto simpleMoment = [&](double x) {
            return x < a ? x * (L - a) / L : a * (L - x) / L;
        };
        for (std::size_t i = 0; i <= Stations; ++i) {
            const double x = L * static_cast<double>(i) / Stations;
            expectNear(one.spans[0][i].moment.maximum, simpleMoment(x));
            EXPECT_EQ(one.spans[0][i].moment.maximumAt, a);
        }
        expectNear(one.reactions[0].maximum, 1 - a / L);
        EXPECT_NEAR(one.spans[0][2].shear.maximum, a < 4.0 ? -a / L : 1 - a / L, 1e-12);
        EXPECT_NEAR(one.spans[0][2].shear.minimum, a <= 4.0 ? -a / L : 1 - a / L, 1e-12);

        Envelope both = ofTwo.makeEmpty();
        ofTwo.add(position / 2, both); // in the left span
        const double b = 2 * L * (position / 2) / (Positions - 1);
        expectNear(both.spans[1][0].moment.minimum, -b * (L * L - b * b) / (4 * L * L));
    }
}

TEST(GirderEnvelope, trainOverTheGirder)
{
    constexpr double L = 10.0;
    Model model = girderOf({L, L}, Support::Hinged, Support::Hinged, 50.0);
    model.train = {{0.0, 60.0}, {2.0, 90.0}};
    const EnvelopeSolver solver(model, 10, 3001);
    Envelope whole = solver.makeEmpty(), first = solver.makeEmpty(), second = solver.makeEmpty();
    for (int position = 0; position < 3001; ++position) {
        solver.add(position, whole);
        solver.add(position, position < 1234 ? first : second);
    }
    EXPECT_EQ(solver.firstAxleAt(3000), 2 * L + 2.0); // the last axle leaves
    // Over a support at most all that is there, less what is lost to the others.
    EXPECT_GT(whole.reactions[1].maximum, 145.0);
    EXPECT_LT(whole.reactions[1].maximum, 150.0);
    // Symmetric spans, the same greatest moment under the heavy axle; it follows by 2 m.
    EXPECT_NEAR(whole.spans[0][10].moment.minimum, whole.spans[1][0].moment.minimum, 1e-9);
    EXPECT_GT(whole.spans[0][4].moment.maximumAt, 4.0);
    EXPECT_LE(whole.spans[0][4].moment.maximumAt, 6.1);

    first.add(second);
    EXPECT_EQ(first, whole);
}

class Cancel : public Tools::CancelHandler {
public:
    explicit Cancel(int after) : m_left(after) {}
    bool isCancelled() override { return m_left-- <= 0; }

private:
    std::atomic<int> m_left;
};

class Display : public Tools::ProgressHandler {
public:
    void setPosition(std::uint64_t position) override { note(position); }
    void setIncrement(std::uint64_t) override { m_isOther = true; }
    void setInfo(const char*) override { m_isOther = true; }
    void setTitle(const char*) override { m_isOther = true; }
    void activate() override { m_isOther = true; }
    void reset() override { note(0); }
    void setMinimum(std::uint64_t) override { m_isOther = true; }
    void setMaximum(std::uint64_t value) override { m_maximum = value; }

    void note(std::uint64_t position)
    {
        m_isElsewhere = m_isElsewhere || std::this_thread::get_id() != m_thread;
        m_positions.push_back(position);
    }

    std::thread::id m_thread = std::this_thread::get_id();
    bool m_isElsewhere = false;
    bool m_isOther = false;
    std::uint64_t m_maximum = 0;
    std::vector<std::uint64_t> m_positions;
};

TEST(GirderEnvelope, partsInTheBackgroundEqualTheSequentialRun)
{
    std::mt19937 random(3);
    Model model = randomGirder(random);
    model.train = {{0.0, 60.0}, {2.0, 90.0}, {3.5, 70.0}};
    const EnvelopeSolver solver(model, 10, 4001);
    Cancel never(1000000);
    Tools::ProgressMessenger nobody(nullptr, 0);
    Envelope sequential, background;
    ASSERT_TRUE(computeEnvelope(solver, true, never, nobody, sequential));
    Display display;
    ASSERT_EQ(computeEnvelopeInBackground(solver, never, &display, background), RunEnd::Done);
    EXPECT_EQ(background, sequential);

    EXPECT_FALSE(display.m_isElsewhere);
    EXPECT_FALSE(display.m_isOther);
    EXPECT_EQ(display.m_maximum, 4001U);
    EXPECT_GT(display.m_positions.size(), 20U);
    EXPECT_EQ(display.m_positions.back(), 0U);

    Cancel soon(500);
    EXPECT_FALSE(computeEnvelope(solver, false, soon, nobody, sequential));
    EXPECT_EQ(computeEnvelopeInBackground(solver, soon, nullptr, background), RunEnd::Cancelled);
}

TEST(GirderInterruption, cancelsInsteadOfEnding)
{
    {
        Interruption interruption;
        EXPECT_FALSE(interruption.isCancelled());
        std::raise(SIGINT);
        EXPECT_TRUE(interruption.isCancelled());
    }
    EXPECT_FALSE(Interruption().isCancelled());
}

TEST(GirderProgressBar, drawsOnOneLineAndLeavesItEmpty)
{
    std::ostringstream out;
    {
        ProgressBar bar(out);
        bar.setPosition(3); // without a maximum there is nothing to show
        EXPECT_EQ(out.str(), "");
        bar.setMaximum(10);
        bar.setPosition(5);
        bar.setIncrement(7);
    }
    const std::string half = "[" + std::string(20, '#') + std::string(20, '.') + "] 50 %";
    const std::string full = "[" + std::string(40, '#') + "] 100 %";
    const std::string blank(full.size(), ' ');
    EXPECT_EQ(out.str(), "\r" + half + "\r" + full + "\r" + blank + "\r");
}

}
