#pragma once

#include "model.h"

#include <mdtools/command_list.h>
#include <mdtools/data_changed.h>
#include <mdtools/selection.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace Girder {

// Tells the views which span of a document has changed.
class SpanChanged : public Tools::DataChangedArgument {
public:
    explicit SpanChanged(std::size_t span) : m_span(span) {}
    std::size_t span() const { return m_span; }

private:
    std::size_t m_span;
};

// A model that is being edited. Every edit becomes a command that can be undone, and its doing,
// undoing and redoing is notified to the views with a SpanChanged. One thread only.
//
// Spans and point loads are counted from 0; they must be there. Values are those that a model may
// have, which the caller checks.
class Document {
public:
    explicit Document(Model model);
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    const Model& model() const { return m_model; }
    const Span& span(std::size_t index) const { return m_model.spans[index]; }
    Tools::DataChangedManager& views() { return m_views; }

    void setLength(std::size_t index, double length);
    void setLoad(std::size_t index, double load);
    void addPointLoad(std::size_t index, const PointLoad& load);
    void removePointLoad(std::size_t index, std::size_t loadIndex);

    // The edits until endGroup() are undone and redone as one. Groups do not nest.
    void beginGroup(const std::string& description);
    void endGroup();
    bool isInGroup() const { return m_group != nullptr; }

    // What can be undone and redone; only outside of a group.
    Tools::CommandList& history() { return m_history; }

    // True from the first edit, undo or redo after setSaved().
    bool isModified() const { return m_isModified; }
    void setSaved() { m_isModified = false; }

    bool isSelected(std::size_t span) const { return m_marks[span].isSelected(); }
    // Selects a span, or takes it out of the selection.
    void toggleSelection(std::size_t span);
    void clearSelection();

private:
    class Mark : public Tools::SelectableObject {};

    void edit(std::size_t span, const std::string& what, std::function<void(Span&)> change,
              std::function<void(Span&)> undo);

    Model m_model;
    std::vector<Mark> m_marks;
    Tools::DataChangedManager m_views;
    Tools::CommandList m_history;
    std::unique_ptr<Tools::GroupCommand> m_group;
    bool m_isModified = false;
};

}
