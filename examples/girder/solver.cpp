#include "solver.h"

namespace Girder {

Extremes Solution::extremes() const
{
    Extremes result;
    for (std::size_t i = 0; i < spans.size(); ++i) {
        const Extremes ofSpan = spans[i].extremes(i);
        result.moment.add(ofSpan.moment);
        result.shear.add(ofSpan.shear);
        result.deflection.add(ofSpan.deflection);
    }
    return result;
}

// The three-moment equations: a row a support that carries a moment, with its own rotation under a
// unit moment there and those under moments at its neighbours.
Solver::Solver(const Model& model)
    : m_stiffness(model.spans.begin(), model.spans.end()), m_rows(model.supports.size())
{
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        m_rows[i].isMoment = model.supports[i] != Support::Hinged;
        if (m_rows[i].isMoment)
            m_rows[i].own = 0.0;
    }
    for (std::size_t i = 0; i < m_stiffness.size(); ++i) {
        const Flexibility flexibility = SpanLine(m_stiffness[i], Loads{}).flexibility();
        Row& left = m_rows[i];
        Row& right = m_rows[i + 1];
        if (left.isMoment) {
            left.own += flexibility.left;
            left.right = flexibility.across;
        }
        if (right.isMoment) {
            right.own += flexibility.right;
            right.left = flexibility.across;
        }
    }
    eliminate();
}

// The Thomas algorithm: an LU factorisation of a tridiagonal matrix, kept for all loadings. The
// equations are dominated by their diagonal, so no rows ever need to be exchanged.
void Solver::eliminate()
{
    for (std::size_t i = 1; i < m_rows.size(); ++i) {
        m_rows[i].left /= m_rows[i - 1].own;
        m_rows[i].own -= m_rows[i].left * m_rows[i - 1].right;
    }
}

// Forward and back substitution.
std::vector<double> Solver::momentsFrom(const std::vector<double>& rotations) const
{
    std::vector<double> moments(m_rows.size());
    for (std::size_t i = 0; i < m_rows.size(); ++i) {
        if (m_rows[i].isMoment)
            moments[i] = -rotations[i];
        if (i > 0)
            moments[i] -= m_rows[i].left * moments[i - 1];
    }
    for (std::size_t i = m_rows.size(); i-- > 0;) {
        if (i + 1 < m_rows.size())
            moments[i] -= m_rows[i].right * moments[i + 1];
        moments[i] /= m_rows[i].own;
    }
    return moments;
}

Solution Solver::solve(const std::vector<Loads>& loads) const
{
    Solution result;
    std::vector<double> rotations(m_rows.size());
    for (std::size_t i = 0; i < m_stiffness.size(); ++i) {
        const SpanLine& line = result.spans.emplace_back(m_stiffness[i], loads[i]);
        const EndRotations ends = line.endRotations();
        rotations[i] += ends.left;
        rotations[i + 1] += ends.right;
    }
    result.supportMoments = momentsFrom(rotations);
    result.reactions.assign(m_rows.size(), 0.0);
    for (std::size_t i = 0; i < result.spans.size(); ++i) {
        SpanLine& line = result.spans[i];
        line.setEndMoments(result.supportMoments[i], result.supportMoments[i + 1]);
        result.reactions[i] += line.leftReaction();
        result.reactions[i + 1] += line.rightReaction();
    }
    return result;
}

Solution solve(const Model& model)
{
    std::vector<Loads> loads;
    for (const Span& span : model.spans)
        loads.push_back(span.loads);
    return Solver(model).solve(loads);
}

}
