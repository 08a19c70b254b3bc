#pragma once

#include <span>
#include <string>
#include <vector>

#include <QWidget>

#include "host/ui_object.h"
#include "workbench/desktop/objects/window_core.h"

class DesktopUix;
class QListWidget;
class QStackedWidget;

/// Every layout and every kind of control, filled with samples, without a server: to look at, at any scale and in any colours.
/// Main thread.
class Gallery final : public QWidget {
public:
    /// `layouts` is the module's text (`ModuleLayouts`), good as long as the gallery. `uix` outlives it. Throws `HostException`
    /// for a broken layout.
    Gallery(DesktopUix& uix, std::span<const BYTE> layouts);
    ~Gallery() override;

    QStringList Names() const;
    /// Puts one in front.
    void Show(int index);
    /// One as a window of its own, modal, until it is closed.
    void Open(int index);

private:
    struct Entry {
        std::wstring id;
        std::span<const BYTE> layouts;
    };

    void Add(std::span<const BYTE> layouts);
    /// At which no page scrolls.
    QSize SizeForAll() const;
    ComPtr<KOV::IUIX_Obj> Make(const Entry& entry, DWORD window_style);

    DesktopUix& m_uix;
    std::shared_ptr<WindowCore> m_core;
    std::vector<Entry> m_entries;
    std::vector<ComPtr<KOV::IUIX_Obj>> m_pages;
    QListWidget* m_list;
    QStackedWidget* m_stack;
};
