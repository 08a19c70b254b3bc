#pragma once

/// A text of a box or a progress window: "<b>" and "</b>" make bold, a line feed begins a line, all else is shown letter by
/// letter.

#include <QTextEdit>

#include <string_view>
#include <vector>

struct TextRun {
    QString text;
    bool is_bold = false;

    bool operator==(const TextRun&) const = default;
};

/// The text in runs of one weight. A tag that closes nothing is passed over.
std::vector<TextRun> SplitMarkedText(std::wstring_view text);

/// Shows such a text, breaks it where it is too long, in the middle of a name too, and lets it be copied.
class MessageText final : public QTextEdit {
public:
    explicit MessageText(QWidget* parent);

    void SetText(std::wstring_view text);
    /// The width at which the text reads well: as wide as it is, but within that of a short and of a long line.
    int ReadableWidth() const;
    /// Takes this width and the height that the text then needs; what doesn't fit on the screen scrolls.
    void FitTo(int width);

private:
    /// The size of the text when lines are broken at `width`, or not at all at -1.
    QSize SizeAt(int width) const;
};
