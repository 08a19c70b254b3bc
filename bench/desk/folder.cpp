#include "bench/desk/folder.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QEventLoop>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>
#include <QTreeView>
#include <malloc.h>

#include "dialog/front/dialog_parameters.h"
#include "dialog/open_save_dialog.h"
#include "frame/plugin.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "tests/dialog/named_folder.h"
#include "workbench/core/host.h"
#include "workbench/core/host_windows.h"
#include "workbench/desktop/objects/message_pump.h"
#include "workbench/desktop/objects/window_core.h"
#include "workbench/desktop/windows/desktop_uix.h"

extern "C" HRESULT KOVE_GetPlugin(void* a, void* b, KOV::IKOV_Plugin** output_plugin);

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::minutes patience{1};

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

class Windows final : public HostWindows {
public:
    ComPtr<KOV::IUIX_Inst> MakeUixExtension(Host& host) override {
        return MakeObject<DesktopUix>(host, host.Commands(), QString());
    }
    HWND DialogOwner() override { return TopModalWindow(); }
    ComPtr<KOV::IKOV_ProgressMon> MakeProgressMonitor() override { return nullptr; }
    HRESULT ShowDefaultDialog(DWORD, KOV::IAFS_Name*, HWND, KOV::IAFS_NamesCollection**, DWORD*) override { return E_NOTIMPL; }
};

/// The module's rooms in this process, on a desktop host.
class Desk {
public:
    Desk() : m_state(MakeState()), m_host(MakeObject<Host>(Options(), m_loop)), m_pump(m_loop) {
        ComPtr<KOV::IKOV_Plugin> root;
        for (const HRESULT result : {KOVE_GetPlugin(nullptr, nullptr, &root), root->Setup(m_host), root->RegisterExts(),
                                     root->FinalizeRegistering(), root->Init()}) {
            if (FAILED(result)) {
                throw std::runtime_error("the module doesn't start");
            }
        }
        m_plugin = static_cast<Plugin*>(root.Get());
    }
    ~Desk() {
        m_plugin->Unload();
        m_plugin.Release();
        m_host.Release();
        fs::remove_all(m_state);
    }
    Desk(const Desk&) = delete;
    Desk& operator=(const Desk&) = delete;

    /// Shows the Open dialog over `provider`, and comes back when it has ended.
    void ShowDialog(KOV::IAFS_FileSys* provider, KOV::IAFS_Name* folder) {
        Ui::OpenSaveDialog dialog(m_host, provider);
        Ui::DialogParameters parameters;
        parameters.FileFilters = Bstr(L"All|*.*|Text|*.txt|");
        parameters.InitialPathName = folder;
        ComPtr<KOV::IAFS_NamesCollection> names;
        (void)dialog.ShowOpenSinglePlace(&names, parameters, folder, nullptr, m_plugin->m_preferences_manager.Snapshot());
    }

private:
    static fs::path MakeState() {
        std::string pattern = (fs::temp_directory_path() / "kov-desk-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        return pattern;
    }
    HostOptions Options() {
        HostOptions options;
        options.state_folder = m_state;
        options.windows = &m_windows;
        return options;
    }

    const fs::path m_state;
    Windows m_windows;
    MainLoop m_loop;
    ComPtr<Host> m_host;
    MessagePump m_pump;
    ComPtr<Plugin> m_plugin;
};

/// Tells when the last item was handed over; may hold the listing back before its first.
class MeasuredFolder final : public NamedFolder {
public:
    HRESULT EnumFolder(KOV::IAFS_Name* name, KOV::IString* details, KOV::IKOV_Flag* cancel_flag,
                       KOV::IAFS_EnumFolder** out_enum) override {
        std::unique_lock hold(m_lock);
        m_changed.wait(hold, [this] { return !m_is_stalled; });
        const HRESULT result = NamedFolder::EnumFolder(name, details, cancel_flag, out_enum);
        // The items exist already: from here on the wire has nothing more to give.
        last_item = Clock::now();
        return result;
    }
    void Stall(bool is_stalled) {
        const std::scoped_lock hold(m_lock);
        m_is_stalled = is_stalled;
        m_changed.notify_all();
    }

    std::atomic<Clock::time_point> last_item{};

private:
    std::mutex m_lock;
    std::condition_variable m_changed;
    bool m_is_stalled = false;
};

void Fill(NamedFolder& folder, std::size_t count) {
    std::uint64_t state = 88172645463325252u;
    for (std::size_t i = 0; i < count; ++i) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        ItemFacts facts;
        facts.title =
            L"Document " + std::to_wstring(state % 1'000'000) + L" of " + std::to_wstring(i) + (i % 3 == 0 ? L".txt" : L".pdf");
        facts.size = state % 10'000'000;
        facts.creation_time = 132'000'000'000'000'000u + state % 1'000'000'000'000u;
        facts.last_write_time = facts.creation_time + i;
        folder.items.push_back(MakeObject<NamedItemInfo>(std::move(facts)));
    }
}

/// How a list was sorted before it was held here: the titles without their extensions by the order that people expect, then the
/// extensions.
double SecondsOfOneSort(const NamedFolder& folder) {
    struct Row {
        std::wstring title;
        std::wstring extension;
    };
    std::vector<Row> rows;
    for (const ComPtr<NamedItemInfo>& item : folder.items) {
        Bstr title;
        item->get_Title(&title);
        const std::wstring extension = PathFindExtensionW(title);
        rows.push_back({title.Text().substr(0, title.Length() - extension.size()), extension});
    }
    std::vector<const Row*> order;
    for (const Row& row : rows) {
        order.push_back(&row);
    }
    const auto start = Clock::now();
    std::stable_sort(order.begin(), order.end(), [](const Row* a, const Row* b) {
        const int titles = StrCmpLogicalW(a->title.c_str(), b->title.c_str());
        return titles != 0 ? titles < 0 : StrCmpLogicalW(a->extension.c_str(), b->extension.c_str()) < 0;
    });
    return Since(start);
}

/// Turns the loop until `is_done`, and gives the longest stretch that one turn took.
double TurnUntil(const std::function<bool()>& is_done) {
    const auto deadline = Clock::now() + patience;
    double longest = 0;
    while (!is_done()) {
        if (Clock::now() > deadline) {
            throw std::runtime_error("a step of the dialog did not come");
        }
        const auto start = Clock::now();
        QCoreApplication::processEvents();
        longest = std::max(longest, Since(start));
        std::this_thread::sleep_for(std::chrono::microseconds(200)); // leaves the processor to the worker
    }
    return longest;
}

/// Counts the paints of a widget.
class PaintCounter final : public QObject {
public:
    explicit PaintCounter(QWidget& widget) : m_widget(widget) { widget.installEventFilter(this); }
    ~PaintCounter() override { m_widget.removeEventFilter(this); }
    int count = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    QWidget& m_widget;
};

QDialog& FrontDialog() {
    QDialog* found = nullptr;
    TurnUntil([&] {
        found = qobject_cast<QDialog*>(QApplication::activeModalWidget());
        return found != nullptr && found->isVisible();
    });
    return *found;
}

template <class Widget>
Widget& Control(QDialog& dialog, const char* name) {
    auto* const found = dialog.findChild<Widget*>(name);
    if (found == nullptr) {
        throw std::runtime_error(std::string("the dialog has no ") + name);
    }
    return *found;
}

/// Runs `step` and waits for what it brings about to be painted.
double UntilPainted(QTreeView& list, const std::function<void()>& step, const std::function<bool()>& is_done) {
    PaintCounter paints(*list.viewport());
    const auto start = Clock::now();
    step();
    TurnUntil(is_done);
    const int before = paints.count;
    if (before == 0) {
        list.viewport()->update();
        TurnUntil([&] { return paints.count > before; });
    }
    return Since(start);
}

void ClickHeader(QTreeView& list, int column) {
    QWidget* const viewport = list.header()->viewport();
    const QPointF place(list.header()->sectionViewportPosition(column) + 20, viewport->height() / 2.0);
    for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
        QMouseEvent event(type, place, viewport->mapToGlobal(place), Qt::LeftButton,
                          type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(viewport, &event);
    }
}

double PaintOnce(QTreeView& list) {
    const auto start = Clock::now();
    list.viewport()->repaint();
    return Since(start);
}

/// What a person does once the dialog shows; an exception comes out behind the dialog's end.
void WithDialog(Desk& desk, MeasuredFolder& folder, const std::function<void(QDialog&)>& person) {
    std::exception_ptr failure;
    QTimer::singleShot(0, qApp, [&] {
        try {
            QDialog& dialog = FrontDialog();
            person(dialog);
        } catch (...) {
            failure = std::current_exception();
        }
        folder.Stall(false);
        if (QWidget* const open = QApplication::activeModalWidget(); open != nullptr) {
            open->close();
        }
    });
    desk.ShowDialog(&folder, folder.folder->m_name);
    if (failure) {
        std::rethrow_exception(failure);
    }
}

} // namespace

FolderFigures MeasureFolder(std::size_t count) {
    FolderFigures figures;
    Desk desk;
    const ComPtr<MeasuredFolder> folder = MakeObject<MeasuredFolder>();
    Fill(*folder, count);
    figures.sorted = SecondsOfOneSort(*folder);
    const int rows = static_cast<int>(count);
    folder->Stall(true);
    WithDialog(desk, *folder, [&](QDialog& dialog) {
        auto& list = Control<QTreeView>(dialog, "lst.files");
        const auto has_rows = [&](int wanted) {
            return [&list, wanted] { return list.isEnabled() && list.model()->rowCount() == wanted; };
        };
        TurnUntil([] { return !QApplication::activeModalWidget()->isHidden(); });
        const std::size_t heap_before = mallinfo2().uordblks;
        PaintCounter paints(*list.viewport());
        folder->Stall(false);
        figures.longest_pass = TurnUntil(has_rows(rows));
        const int painted_before = paints.count;
        list.viewport()->update();
        figures.longest_pass = std::max(figures.longest_pass, TurnUntil([&] { return paints.count > painted_before; }));
        figures.shown = Since(folder->last_item.load());
        figures.bytes_a_row = static_cast<double>(mallinfo2().uordblks - heap_before) / static_cast<double>(count);
        figures.painted = PaintOnce(list);
        figures.resorted = UntilPainted(
            list, [&] { ClickHeader(list, 4); }, has_rows(rows));
        auto& filter = Control<QComboBox>(dialog, "cb.filter");
        const auto choose = [&filter](int index) {
            return [&filter, index] {
                filter.setCurrentIndex(index);
                Q_EMIT filter.activated(index);
            };
        };
        figures.filtered = UntilPainted(list, choose(1), has_rows((rows + 2) / 3));
        figures.refilled = UntilPainted(list, choose(0), has_rows(rows));
    });
    return figures;
}

StallFigures MeasureStall() {
    StallFigures figures;
    Desk desk;
    const ComPtr<MeasuredFolder> folder = MakeObject<MeasuredFolder>();
    Fill(*folder, 10);
    const auto stalled = [&](const std::function<void(QDialog&)>& person) {
        folder->Stall(true);
        WithDialog(desk, *folder, person);
    };
    const auto seconds_to_hide = [](QDialog& dialog, const std::function<void()>& end) {
        const auto start = Clock::now();
        end();
        TurnUntil([&dialog] { return !dialog.isVisible(); });
        return Since(start);
    };
    stalled([&](QDialog& dialog) {
        for (int i = 0; i < 100; ++i) {
            const auto start = Clock::now();
            QCoreApplication::postEvent(&dialog, new QKeyEvent(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier));
            QCoreApplication::postEvent(&dialog, new QKeyEvent(QEvent::KeyRelease, Qt::Key_Tab, Qt::NoModifier));
            QCoreApplication::processEvents();
            figures.answer = std::max(figures.answer, Since(start));
        }
        auto& cancel = Control<QPushButton>(dialog, "btn.cancel");
        figures.cancel = seconds_to_hide(dialog, [&] { cancel.click(); });
    });
    stalled([&](QDialog& dialog) {
        figures.escape = seconds_to_hide(dialog, [&] {
            QCoreApplication::postEvent(&dialog, new QKeyEvent(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier));
        });
    });
    return figures;
}
