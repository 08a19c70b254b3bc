#include "workbench/desktop/workplace.h"

#include <algorithm>

#include "workbench/core/commands.h"
#include "workbench/desktop/objects/text.h"

Workplace::Workplace(const DeskServices& services, HWND frame) : m_services(services), m_frame(frame), m_life(services.host) {}

/// No worker has anything to do any more.
Workplace::~Workplace() {
    for (const std::unique_ptr<DocumentTab>& tab : m_tabs) {
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

void Workplace::RunCommand(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner) {
    DocumentTab* const tab = TabOf(owner);
    if (tab == nullptr || tab->File().IsNull()) {
        m_services.host.Commands().Execute(id, owner);
        return;
    }
    if (tab->IsBusy()) {
        return;
    }
    const std::optional<CommandFacts> facts = m_services.host.Commands().Facts(id);
    tab->BeginWork(facts ? ToQString(m_services.host.Resolve(facts->title)).remove('&') : QString());
    tab->Connection()->Work().Post({
        [this, id, owner](KOV::IKOV_Flag*) { Check(m_services.host.Commands().Execute(id, owner)); },
        [this, tab](const Outcome&) {
            tab->EndWork();
            TakeUpCheckIn(*tab);
        },
        nullptr,
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

/// A command may have made a new state of the file, as a check-in does: the changes began from that one then.
void Workplace::TakeUpCheckIn(DocumentTab& tab) {
    const ComPtr<KOV::IAFS_File> file = tab.File();
    if (!file.IsNull() && !tab.is_outdated) {
        CopySource source = tab.Pdf().Source();
        source.stamp = KnownStamp(Access(nullptr), file);
        tab.Pdf().SetSource(std::move(source));
    }
}
