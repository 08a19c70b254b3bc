#include "workbench/desktop/boxes/message_text.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include <QTextCursor>
#include <QTextDocument>

#include "workbench/desktop/objects/text.h"

namespace {

constexpr std::wstring_view opening_tag = L"<b>";
constexpr std::wstring_view closing_tag = L"</b>";
constexpr int short_line = 42;
constexpr int long_line = 68;
constexpr int most_lines = 22;

} // namespace

std::vector<TextRun> SplitMarkedText(std::wstring_view text) {
    std::vector<TextRun> runs;
    bool is_bold = false;
    while (!text.empty()) {
        if (text.starts_with(opening_tag) || text.starts_with(closing_tag)) {
            is_bold = text.starts_with(opening_tag);
            text.remove_prefix(is_bold ? opening_tag.size() : closing_tag.size());
            continue;
        }
        const std::size_t length = std::min({text.find(opening_tag), text.find(closing_tag), text.size()});
        runs.push_back({ToQString(text.substr(0, length)), is_bold});
        text.remove_prefix(length);
    }
    return runs;
}

MessageText::MessageText(QWidget* parent) : QTextEdit(parent) {
    setReadOnly(true);
    setFrameShape(NoFrame);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setFocusPolicy(Qt::NoFocus);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    viewport()->setAutoFillBackground(false);
    viewport()->setCursor(Qt::IBeamCursor);
    document()->setDocumentMargin(0);
}

void MessageText::SetText(std::wstring_view text) {
    clear();
    QTextCursor cursor(document());
    for (const TextRun& run : SplitMarkedText(text)) {
        QTextCharFormat format;
        format.setFontWeight(run.is_bold ? QFont::Bold : QFont::Normal);
        cursor.insertText(run.text, format);
    }
    moveCursor(QTextCursor::Start);
}

// On a copy: the widget breaks the lines of its own document as wide as it is now.
QSize MessageText::SizeAt(int width) const {
    const std::unique_ptr<QTextDocument> copy(document()->clone());
    copy->setDefaultFont(font());
    copy->setDocumentMargin(0);
    copy->setDefaultTextOption(document()->defaultTextOption());
    copy->setTextWidth(width);
    return {static_cast<int>(std::ceil(copy->idealWidth())), static_cast<int>(std::ceil(copy->size().height()))};
}

int MessageText::ReadableWidth() const {
    const int letter = fontMetrics().averageCharWidth();
    return std::clamp(SizeAt(-1).width(), short_line * letter, long_line * letter);
}

void MessageText::FitTo(int width) {
    const int needed = SizeAt(width).height();
    const int most = most_lines * fontMetrics().lineSpacing();
    setFixedSize(width, std::min(needed, most));
    setVerticalScrollBarPolicy(needed > most ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    if (needed > most) { // so that the keyboard reaches what is below
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        setFocusPolicy(Qt::StrongFocus);
    }
}
