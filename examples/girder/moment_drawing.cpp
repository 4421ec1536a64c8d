#include "moment_drawing.h"

#include "solver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

namespace Girder {

namespace {

constexpr int Columns = 72;
constexpr int Rows = 25;
constexpr int PointsPerColumn = 4;
constexpr char Axis = '-';
constexpr char Line = '*';
constexpr char Filling = ':';
constexpr char Held = 'A';
constexpr char Fixed = '#';

// A raster of characters: a column is filled between the axis and the line, and marked where the
// line passes through it, which several points a column find also where it is steep.
class Drawing {
public:
    explicit Drawing(const Model& model)
    {
        for (const Span& span : model.spans)
            m_length += span.length;
        const Solution solution = solve(model);
        double start = 0.0;
        for (const SpanLine& line : solution.spans) {
            addMoments(start, line);
            start += line.length();
        }
        const Range range = solution.extremes().moment;
        m_top = std::min(range.minimum().value, 0.0);
        m_bottom = std::max(range.maximum().value, 0.0);
        m_axis = rowOf(0.0);
        for (int column = 0; column < Columns; ++column)
            drawMoment(column);
        start = 0.0;
        for (std::size_t i = 0; i < model.supports.size(); ++i) {
            at(m_axis, columnOf(start)) = model.supports[i] == Support::Fixed ? Fixed : Held;
            start += i < model.spans.size() ? model.spans[i].length : 0.0;
        }
    }

    double columnWidth() const { return m_length / Columns; }

    void print(const NumberFormat& format, std::ostream& out) const
    {
        std::vector<std::string> labels(Rows);
        labels.front() = toListText(m_top, format);
        labels.back() = toListText(m_bottom, format);
        labels[static_cast<std::size_t>(m_axis)] = toListText(0.0, format);
        std::size_t width = 0;
        for (const std::string& label : labels)
            width = std::max(width, label.size());
        for (std::size_t row = 0; row < Rows; ++row) {
            std::string line =
                std::string(width - labels[row].size(), ' ') + labels[row] + " |" + m_rows[row];
            line.erase(line.find_last_not_of(' ') + 1);
            out << line << '\n';
        }
    }

private:
    int columnOf(double x) const
    {
        return std::clamp(static_cast<int>(x / m_length * Columns), 0, Columns - 1);
    }

    int rowOf(double moment) const
    {
        // Halves first: the whole height may be beyond all numbers.
        const double height = m_bottom / 2 - m_top / 2;
        const double part = height > 0.0 ? (moment / 2 - m_top / 2) / height : 0.5;
        return std::clamp(static_cast<int>(std::lround(part * (Rows - 1))), 0, Rows - 1);
    }

    // Of all moments in a column the greatest one is drawn, so that no peak is lost.
    void addMoments(double start, const SpanLine& line)
    {
        const int count =
            static_cast<int>(PointsPerColumn * Columns * line.length() / m_length) + 1;
        for (int i = 0; i <= count; ++i) {
            const double x = line.stationAt(i, count);
            const double moment = line.moment(x);
            double& drawn = m_moments[static_cast<std::size_t>(columnOf(start + x))];
            if (std::abs(moment) > std::abs(drawn))
                drawn = moment;
        }
    }

    void drawMoment(int column)
    {
        const int end = rowOf(m_moments[static_cast<std::size_t>(column)]);
        for (int row = std::min(end, m_axis); row <= std::max(end, m_axis); ++row)
            at(row, column) = Filling;
        at(m_axis, column) = Axis;
        at(end, column) = Line;
    }

    char& at(int row, int column)
    {
        return m_rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    }

    double m_length = 0.0;
    double m_top = 0.0;
    double m_bottom = 0.0;
    int m_axis = 0;
    std::array<double, Columns> m_moments{};
    std::vector<std::string> m_rows = std::vector<std::string>(Rows, std::string(Columns, ' '));
};

}

void drawMoments(const Model& model, const NumberFormat& format, std::ostream& out)
{
    const Drawing drawing(model);
    out << "Moments [kNm], drawn on the side that they pull at\n\n";
    drawing.print(format, out);
    out << "\n  " << Held << " support, " << Fixed << " fixed end; the width of a letter is "
        << toListText(drawing.columnWidth(), format) << " m\n";
}

}
