#include "document.h"

#include <hpdf.h>

#include <algorithm>
#include <stdexcept>

namespace PrintTool {

namespace {

// In points of 1/72 inch.
constexpr float Margin = 50;
constexpr float FontSize = 9;
constexpr float HeadingSize = 14;
constexpr float LineHeight = 11.5F;
constexpr float FooterHeight = 30;
constexpr std::size_t Columns = 92;
constexpr int TabWidth = 8;

void throwFailure(HPDF_STATUS error, HPDF_STATUS detail, void* /*context*/)
{
    throw std::runtime_error("PDF library: error " + std::to_string(error) + ", detail " +
                             std::to_string(detail));
}

std::string expandTabs(const std::string& line)
{
    std::string text;
    for (const char c : line) {
        if (c == '\t')
            text.append(TabWidth - text.size() % TabWidth, ' ');
        else if (static_cast<unsigned char>(c) >= ' ')
            text += c;
    }
    return text;
}

}

struct Document::State {
    HPDF_Doc document = HPDF_New(&throwFailure, nullptr);
    HPDF_Font font = nullptr;
    HPDF_Font headingFont = nullptr;
    std::vector<HPDF_Page> pages;
    float position = 0;

    void put(HPDF_Page page, HPDF_Font textFont, float size, float x, float y,
             const std::string& text) const
    {
        HPDF_Page_BeginText(page);
        HPDF_Page_SetFontAndSize(page, textFont, size);
        HPDF_Page_TextOut(page, x, y, text.c_str());
        HPDF_Page_EndText(page);
    }

    // Moves down by `height`, onto a new page where this one is full.
    void advance(Document& owner, float height)
    {
        if (pages.empty() || !hasRoom(height))
            owner.startPage();
        position -= height;
    }

    float pageRoom() const { return HPDF_Page_GetHeight(pages.back()) - 2 * Margin - FooterHeight; }

    bool hasRoom(float height) const { return position - height >= Margin + FooterHeight; }
};

Document::Document() : m_state(std::make_unique<State>())
{
    if (m_state->document == nullptr)
        throw std::runtime_error("PDF library: no memory");
    HPDF_SetCompressionMode(m_state->document, HPDF_COMP_ALL);
    m_state->font = HPDF_GetFont(m_state->document, "Courier", "WinAnsiEncoding");
    m_state->headingFont = HPDF_GetFont(m_state->document, "Helvetica-Bold", "WinAnsiEncoding");
}

Document::~Document()
{
    if (m_state->document != nullptr)
        HPDF_Free(m_state->document);
}

void Document::startPage()
{
    HPDF_Page page = HPDF_AddPage(m_state->document);
    HPDF_Page_SetSize(page, HPDF_PAGE_SIZE_A4, HPDF_PAGE_PORTRAIT);
    m_state->pages.push_back(page);
    m_state->position = HPDF_Page_GetHeight(page) - Margin;
}

void Document::addHeading(const std::string& text)
{
    m_state->advance(*this, 2 * LineHeight);
    m_state->put(m_state->pages.back(), m_state->headingFont, HeadingSize, Margin,
                 m_state->position, text);
    m_state->position -= LineHeight;
}

void Document::addLine(const std::string& line)
{
    const std::string text = expandTabs(line);
    std::size_t start = 0;
    do {
        m_state->advance(*this, LineHeight);
        m_state->put(m_state->pages.back(), m_state->font, FontSize, Margin, m_state->position,
                     text.substr(start, Columns));
        start += Columns;
    } while (start < text.size());
}

void Document::addBlock(const std::vector<std::string>& lines)
{
    float height = 0;
    for (const std::string& line : lines)
        height += LineHeight * static_cast<float>(std::max<std::size_t>(
                                   (expandTabs(line).size() + Columns - 1) / Columns, 1));
    if (!m_state->pages.empty() && !m_state->hasRoom(height) && height <= m_state->pageRoom())
        startPage();
    for (const std::string& line : lines)
        addLine(line);
}

void Document::save(const std::string& file)
{
    const std::size_t count = m_state->pages.size();
    for (std::size_t i = 0; i < count; ++i) {
        const std::string footer = std::to_string(i + 1) + " / " + std::to_string(count);
        m_state->put(m_state->pages[i], m_state->font, FontSize, Margin, Margin, footer);
    }
    HPDF_SaveToFile(m_state->document, file.c_str());
}

}
