#pragma once

/// A row of buttons for commands: in a window, in a panel of the ribbon. Main thread.

#include <QToolBar>

class CommandToolBar final : public QToolBar {
public:
    enum class Look {
        /// Small icons with their texts beside; the texts' mnemonics work.
        in_window,
        /// Icons alone; the texts are their names.
        in_frame,
        /// Big icons over their texts.
        in_ribbon,
    };
    CommandToolBar(Look look, QWidget* parent);

    /// `index` -1 is the end; false for one past the end. A separator shows only between buttons.
    bool InsertCommand(QAction* action, int index);
    bool InsertSeparator(int index);

protected:
    void actionEvent(QActionEvent* event) override;

private:
    bool Insert(QAction* action, int index);
    void ShowSeparators();
    void DressButton(QAction* action);

    const Look m_look;
    bool m_is_showing_separators = false;
};
