#pragma once

/// The heads of a list's columns. Columns keep their shares of the width when the window grows; a drag changes the shares.

#include <functional>
#include <vector>

#include <QHeaderView>

class ListHeader final : public QHeaderView {
public:
    /// `on_click` gets the column whose head was clicked with the left button, once the header is done with the click.
    ListHeader(std::function<void(int column)> on_click, QWidget* parent);

    /// A column that the model has just got; `width` of a view `whole` pixels wide.
    void AddColumn(int index, int width, int whole);
    /// The view is `whole` pixels wide now.
    void FitTo(int whole);

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    void KeepShare(int column, int width);

    const std::function<void(int)> m_on_click;
    /// Of the view's width, a column each.
    std::vector<double> m_shares;
    int m_whole = 1;
    bool m_is_fitting = false;
    int m_clicked = -1;
};
