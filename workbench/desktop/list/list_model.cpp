#include "workbench/desktop/list/list_model.h"

#include <algorithm>

#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"

namespace {

/// A cell is one line, whatever a name holds.
QString OnOneLine(QString text) {
    for (QChar& character : text) {
        if (character < u' ' || character == QChar::LineSeparator || character == QChar::ParagraphSeparator) {
            character = u' ';
        }
    }
    return text;
}

bool BeginsWith(std::wstring_view text, std::wstring_view folded_start) {
    return text.size() >= folded_start.size() &&
           std::equal(folded_start.begin(), folded_start.end(), text.begin(), [](wchar_t folded, wchar_t character) {
               return QChar::toCaseFolded(static_cast<char32_t>(character)) == static_cast<char32_t>(folded);
           });
}

KOV::UiListItemId ItemId(const QModelIndex& index) { return {index.row(), index.column()}; }

} // namespace

void ListModel::SetCallbacks(KOV::IUIX_List* list, KOV::IUIX_ListCallbacks* callbacks) {
    m_list = list;
    m_callbacks = callbacks;
}

void ListModel::InsertColumn(int index, ListColumn column) {
    Settle();
    beginInsertColumns({}, index, index);
    m_columns.insert(m_columns.begin() + index, std::move(column));
    endInsertColumns();
}

void ListModel::InsertRow(int index) {
    if (m_waiting > 0 && (index < m_first_waiting || index > m_first_waiting + m_waiting)) {
        Settle();
    }
    if (m_waiting == 0) {
        m_first_waiting = index;
        QMetaObject::invokeMethod(this, &ListModel::Settle, Qt::QueuedConnection);
    }
    ++m_waiting;
}

void ListModel::Settle() {
    if (m_waiting == 0) {
        return;
    }
    const int count = std::exchange(m_waiting, 0);
    beginInsertRows({}, m_first_waiting, m_first_waiting + count - 1);
    m_rows += count;
    endInsertRows();
}

void ListModel::RemoveAllRows() {
    m_waiting = 0;
    beginResetModel();
    m_rows = 0;
    endResetModel();
}

ListModel::Text ListModel::TextOf(const QModelIndex& index) const {
    const ComPtr<KOV::IUIX_ListCallbacks> callbacks = m_callbacks;
    const ComPtr<KOV::IUIX_List> list = m_list;
    const KOV::UiListItemId id = ItemId(index);
    LPCWSTR text = nullptr;
    ULONG length = 0;
    DWORD flags = 0;
    if (!index.isValid() || callbacks.IsNull() || callbacks->List_OnGetItemText(list, &id, &text, &length, &flags) != S_OK ||
        text == nullptr) {
        return {};
    }
    return {OnOneLine(ToQString(std::wstring_view(text, length))), flags};
}

ListModel::Image ListModel::ImageOf(const QModelIndex& index) const {
    const ComPtr<KOV::IUIX_ListCallbacks> callbacks = m_callbacks;
    const ComPtr<KOV::IUIX_List> list = m_list;
    const KOV::UiListItemId id = ItemId(index);
    SIZE size{};
    if (!index.isValid() || callbacks.IsNull() || callbacks->List_OnGetItemImageSize(list, &id, &size) != S_OK || size.cx <= 0 ||
        size.cy <= 0) {
        return {};
    }
    ComPtr<KOV::IKOV_MultiSizeImage> image;
    double opacity = 1;
    if (callbacks->List_OnGetItemImage(list, &id, &image, &opacity) != S_OK) {
        return {};
    }
    return {IconOf(image), QSize(size.cx, size.cy), std::clamp(opacity, 0.0, 1.0)};
}

int ListModel::FindRow(const QString& start, int from) const {
    const ComPtr<KOV::IUIX_ListCallbacks> callbacks = m_callbacks;
    const ComPtr<KOV::IUIX_List> list = m_list;
    const std::wstring folded = start.toCaseFolded().toStdWString();
    for (int step = 0; step < m_rows && !callbacks.IsNull(); ++step) {
        const KOV::UiListItemId id{(from + step) % m_rows, 0};
        LPCWSTR text = nullptr;
        ULONG length = 0;
        DWORD flags = 0;
        if (callbacks->List_OnGetItemText(list, &id, &text, &length, &flags) == S_OK && text != nullptr &&
            BeginsWith({text, length}, folded)) {
            return id.nItem;
        }
    }
    return -1;
}

int ListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : m_rows; }

int ListModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : Columns(); }

QVariant ListModel::data(const QModelIndex& index, int role) const {
    if (role == Qt::DisplayRole) {
        return TextOf(index).text;
    }
    if (role == Qt::DecorationRole) {
        const Image image = ImageOf(index);
        return image.icon.isNull() ? QVariant() : QVariant(image.icon);
    }
    return {};
}

QVariant ListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= Columns()) {
        return {};
    }
    const ListColumn& column = Column(section);
    switch (role) {
    case Qt::DisplayRole:
        return column.title;
    case Qt::ToolTipRole:
        return PlainTip(column.hint);
    case Qt::TextAlignmentRole:
        return QVariant(Qt::AlignLeft | Qt::AlignVCenter);
    default:
        return {};
    }
}
