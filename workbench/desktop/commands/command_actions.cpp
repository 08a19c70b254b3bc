#include "workbench/desktop/commands/command_actions.h"

#include <QPointer>

#include "workbench/desktop/objects/images.h"
#include "workbench/desktop/objects/text.h"

namespace {

constexpr const char* id_property = "command";

/// What stands behind a tab would be shown as a shortcut.
QString Title(QString text) { return text.replace(u'\t', u' '); }

QString WithoutMnemonicSign(const QString& title) {
    QString plain;
    for (qsizetype at = 0; at < title.size(); ++at) {
        at += title[at] == u'&' && at + 1 < title.size() ? 1 : 0;
        plain += title[at];
    }
    return plain;
}

} // namespace

CommandActions::CommandActions(CommandCollection& commands, KOV::IKOV_Inst& host, KOV::IUIX_Obj* owner, QObject* parent,
                               CommandGate gate)
    : QObject(parent), m_commands(&commands), m_host(host), m_owner(owner), m_gate(std::move(gate)) {
    m_commands->AddObserver(this);
}

CommandActions::~CommandActions() { CutOff(); }

void CommandActions::CutOff() {
    if (!m_commands.IsNull()) {
        m_commands->RemoveObserver(this);
    }
    m_commands.Release();
    m_owner.Release();
}

QAction* CommandActions::ActionOf(DWORD id) {
    if (const auto known = m_actions.find(id); known != m_actions.end()) {
        return known->second;
    }
    auto* const action = new QAction(this);
    m_actions[id] = action;
    action->setProperty(id_property, QVariant::fromValue(id));
    connect(action, &QAction::triggered, this, [this, id] {
        if (m_commands.IsNull()) {
            return;
        }
        if (m_gate.run) {
            m_gate.run(id, m_owner);
            return;
        }
        // The handler may end the window, and these actions with it.
        const ComPtr<CommandCollection> commands = m_commands;
        const ComPtr<KOV::IUIX_Obj> owner = m_owner;
        (void)commands->Execute(id, owner);
    });
    Show(id);
    AskStatesOf({id});
    return action;
}

DWORD CommandActions::IdOf(const QAction& action) { return action.property(id_property).value<DWORD>(); }

void CommandActions::Show(DWORD id) {
    const auto found = m_actions.find(id);
    if (found == m_actions.end()) {
        return;
    }
    QAction& action = *found->second;
    const std::optional<CommandFacts> facts = m_commands.IsNull() ? std::nullopt : m_commands->Facts(id);
    action.setVisible(facts.has_value());
    if (!facts.has_value()) {
        return;
    }
    const QString title = Title(Resolved(m_host, facts->title.c_str()));
    const QString tip = Resolved(m_host, facts->tip.c_str());
    action.setObjectName(ToQString(facts->name));
    action.setText(title);
    action.setToolTip(PlainTip(tip.isEmpty() ? WithoutMnemonicSign(title) : tip));
    action.setStatusTip(tip);
    action.setIcon(IconOf(facts->icon));
}

void CommandActions::CommandAdded(DWORD id) {
    if (m_actions.contains(id)) {
        Show(id);
        // Who adds a command can't answer for it before that is done.
        (void)m_commands->UpdateCmdState(1, id);
    }
}

void CommandActions::StatesMarked(const std::vector<DWORD>& ids) { AskStatesOf(ids.empty() ? Ids() : ids); }

std::vector<DWORD> CommandActions::Ids() const {
    std::vector<DWORD> ids;
    for (const auto& [id, action] : m_actions) {
        ids.push_back(id);
    }
    return ids;
}

void CommandActions::AskStates() { AskStatesOf(Ids()); }

void CommandActions::AskStates(const QList<QAction*>& actions) {
    std::vector<DWORD> ids;
    for (const QAction* const action : actions) {
        if (const DWORD id = IdOf(*action); id != 0) {
            ids.push_back(id);
        }
    }
    AskStatesOf(ids);
}

void CommandActions::AskStatesOf(const std::vector<DWORD>& ids) {
    // A handler may do what it wants, end these actions too.
    const QPointer<CommandActions> guard = this;
    const ComPtr<CommandCollection> commands = m_commands;
    const ComPtr<KOV::IUIX_Obj> owner = m_owner;
    for (const DWORD id : ids) {
        if (commands.IsNull() || !m_actions.contains(id)) {
            continue;
        }
        const bool is_enabled =
            (!m_gate.may_run || m_gate.may_run(id, owner)) && (commands->State(id, owner) & KOV::UIX_CmdState_Disabled) == 0;
        if (guard.isNull()) {
            return;
        }
        m_actions[id]->setEnabled(is_enabled);
    }
}

void CommandActions::ShowTexts() {
    for (const DWORD id : Ids()) {
        Show(id);
    }
}
