#include "workbench/desktop/workplace.h"

#include <algorithm>
#include <memory>

#include "workbench/core/commands.h"
#include "workbench/desktop/objects/text.h"

namespace {

/// Changes what may be done here, and asks no server.
constexpr std::wstring_view enable_editing = L"sp.cmd.enableEditing";
/// Makes a new state of the file when it is done; a save within it is noted by itself.
constexpr std::wstring_view check_in = L"sp.cmd.checkIn";

} // namespace

Workplace::Workplace(const DeskServices& services, HWND frame) : m_services(services), m_frame(frame), m_life(services.host) {}

/// No worker has anything to do any more.
Workplace::~Workplace() {
    for (const std::unique_ptr<DocumentTab>& tab : m_tabs) {
        if (tab->IsModified()) {
            tab->Pdf().KeepForLater();
        }
        tab->disconnect();
        m_life.Closed(tab->Core());
    }
}

/// Letter case doesn't count in an address, as it doesn't for the servers.
DocumentTab* Workplace::Find(const QString& place) const {
    const auto found = std::find_if(m_tabs.begin(), m_tabs.end(), [&](const std::unique_ptr<DocumentTab>& tab) {
        const CopySource& source = tab->Pdf().Source();
        return source.url.isEmpty() ? !source.path.isEmpty() && source.path == place
                                    : source.url.compare(place, Qt::CaseInsensitive) == 0;
    });
    return found == m_tabs.end() ? nullptr : found->get();
}

std::int64_t Workplace::NewestUnsaved() const {
    std::int64_t newest = 0;
    for (const UnsavedCopy& copy : m_services.host.Unsaved().List()) {
        newest = std::max(newest, copy.id);
    }
    return newest;
}

bool Workplace::MayRunCommand(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner) const {
    const DocumentTab* const tab = TabOf(owner);
    if (tab == nullptr || !tab->IsBusy()) {
        return true;
    }
    const std::optional<CommandFacts> facts = m_services.host.Commands().Facts(id);
    return facts && (facts->new_item_style & command_style_menu) != 0;
}

void Workplace::RunCommand(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner) {
    CommandCollection& commands = m_services.host.Commands();
    DocumentTab* const tab = TabOf(owner);
    if (tab == nullptr || tab->File().IsNull()) {
        commands.Execute(id, owner);
        return;
    }
    if (!MayRunCommand(id, owner)) {
        return;
    }
    // By the time the worker comes to it, another document may be in front: this is about the one that was when it was chosen.
    const ComPtr<TabObject> object = tab->Object();
    const std::optional<CommandFacts> facts = commands.Facts(id);
    if (facts && facts->name == enable_editing) {
        commands.Execute(id, object);
        return;
    }
    tab->BeginWork(facts ? ToQString(m_services.host.Resolve(facts->title)).remove('&') : QString());
    const bool is_check_in = facts && facts->name == check_in;
    const auto checked_in = std::make_shared<std::optional<Stamp>>();
    const ComPtr<KOV::IAFS_File> file = tab->File();
    tab->Connection()->Work().Post({
        [this, id, object, file, is_check_in, checked_in](KOV::IKOV_Flag*) {
            Check(m_services.host.Commands().Execute(id, object));
            *checked_in = is_check_in ? KnownStamp(Access(nullptr), file) : std::nullopt;
        },
        [tab, file = file.Get(), checked_in](const Outcome&) {
            tab->EndWork();
            // Changes that are still there weren't sent: the server's state isn't the one that they began from.
            if (*checked_in && tab->File().Get() == file && !tab->IsModified() && !tab->IsOutdated()) {
                CopySource source = tab->Pdf().Source();
                source.stamp = *checked_in;
                tab->Pdf().SetSource(std::move(source));
            }
        },
        nullptr,
        this,
    });
}

/// The document that a command used in `owner` is about.
DocumentTab* Workplace::TabOf(KOV::IUIX_Obj* owner) const {
    ComPtr<KOV::IKOV_DocumentView> view;
    ComPtr<KOV::IKOV_Document> document;
    if (FAILED(m_services.host.GetDocViewFromUIObj(owner, VARIANT_TRUE, &view)) || view.IsNull() ||
        FAILED(view->get_Doc(&document))) {
        return nullptr;
    }
    const auto found =
        std::find_if(m_tabs.begin(), m_tabs.end(), [&](const auto& tab) { return &tab->Core() == document.Get(); });
    return found == m_tabs.end() ? nullptr : found->get();
}
