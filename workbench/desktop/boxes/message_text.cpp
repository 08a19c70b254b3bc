#include "workbench/desktop/boxes/message_text.h"

#include <algorithm>
#include <cmath>

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

int MessageText::ReadableWidth() const {
    const std::unique_ptr<QTextDocument> unbroken(document()->clone());
    unbroken->setDefaultFont(font());
    unbroken->setTextWidth(-1);
    const int letter = fontMetrics().averageCharWidth();
    return std::clamp(static_cast<int>(std::ceil(unbroken->idealWidth())), short_line * letter, long_line * letter);
}

void MessageText::FitTo(int width) {
    document()->setTextWidth(width);
    const int needed = static_cast<int>(std::ceil(document()->size().height()));
    const int most = most_lines * fontMetrics().lineSpacing();
    setFixedSize(width, std::min(needed, most));
    setVerticalScrollBarPolicy(needed > most ? Qt::ScrollBarAlwaysOn : Qt::ScrollBarAlwaysOff);
    if (needed > most) { // so that the keyboard reaches what is below
        setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
        setFocusPolicy(Qt::StrongFocus);
    }
}
