#include "document.h"

#include "number_text.h"

#include <utility>

namespace Girder {

namespace {

std::string describe(const PointLoad& load)
{
    return toText(load.force) + " kN at " + toText(load.position) + " m";
}

// An edit is a pair of functions on a span, one the other's inverse; undo keeps both.
auto insertPointLoad(std::size_t index, const PointLoad& load)
{
    return [index, load](Span& span) {
        span.loads.points.insert(span.loads.points.begin() + static_cast<std::ptrdiff_t>(index),
                                 load);
    };
}

auto erasePointLoad(std::size_t index)
{
    return [index](Span& span) {
        span.loads.points.erase(span.loads.points.begin() + static_cast<std::ptrdiff_t>(index));
    };
}

}

Document::Document(Model model) : m_model(std::move(model)), m_marks(m_model.spans.size()) {}

void Document::setLength(std::size_t index, double length)
{
    const double old = span(index).length;
    edit(
        index, "length " + toText(length) + " m", [length](Span& span) { span.length = length; },
        [old](Span& span) { span.length = old; });
}

void Document::setLoad(std::size_t index, double load)
{
    const double old = span(index).loads.uniform;
    edit(
        index, "load " + toText(load) + " kN/m", [load](Span& span) { span.loads.uniform = load; },
        [old](Span& span) { span.loads.uniform = old; });
}

void Document::addPointLoad(std::size_t index, const PointLoad& load)
{
    const std::size_t loadIndex = span(index).loads.points.size();
    edit(index, "add " + describe(load), insertPointLoad(loadIndex, load),
         erasePointLoad(loadIndex));
}

void Document::removePointLoad(std::size_t index, std::size_t loadIndex)
{
    const PointLoad load = span(index).loads.points[loadIndex];
    edit(index, "remove " + describe(load), erasePointLoad(loadIndex),
         insertPointLoad(loadIndex, load));
}

void Document::edit(std::size_t index, const std::string& what, std::function<void(Span&)> change,
                    std::function<void(Span&)> undo)
{
    const auto apply = [this, index](const std::function<void(Span&)>& function) {
        function(m_model.spans[index]);
        m_isModified = true;
        const SpanChanged argument(index);
        m_views.invokeDataChanged(&argument);
    };
    auto command = std::make_unique<Tools::FunctionCommand>(
        [apply, change = std::move(change)] { apply(change); },
        [apply, undo = std::move(undo)] { apply(undo); });
    command->setDescription("span " + std::to_string(index + 1) + ": " + what);
    command->activate();
    (m_group ? m_group->getCommandList() : &m_history)->add(std::move(command));
}

void Document::beginGroup(const std::string& description)
{
    m_group = std::make_unique<Tools::GroupCommand>();
    m_group->setDescription(description);
}

void Document::endGroup()
{
    m_history.addGroup(std::move(m_group));
}

// The mark is set to pending and settled at once; a picture on a screen would show what is pending.
void Document::toggleSelection(std::size_t index)
{
    m_marks[index].select();
    m_marks[index].resetUnselected();
}

void Document::clearSelection()
{
    for (Mark& mark : m_marks)
        mark.setNotSelected();
}

}
