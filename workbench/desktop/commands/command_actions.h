#pragma once

/// The commands of the program as actions of Qt's, one a command, for the places of one owner: a frame, a document's view, a
/// window. Main thread.

#include <functional>
#include <map>

#include <QAction>
#include <QList>
#include <QObject>

#include "host/instance.h"
#include "workbench/core/commands.h"

/// What stands between an action and its command's handler. Each may be empty.
struct CommandGate {
    /// Does a command that was chosen. Without it the handler is called at once.
    std::function<void(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner)> run = {};
    /// May it be chosen now? When not, the handler isn't asked.
    std::function<bool(DWORD id, const ComPtr<KOV::IUIX_Obj>& owner)> may_run = {};
};

class CommandActions final : public QObject, private CommandObserver {
public:
    /// `owner` is what handlers get to hear as the object that a command is used in; it may be null. `host` looks texts up and
    /// outlives the actions.
    CommandActions(CommandCollection& commands, KOV::IKOV_Inst& host, KOV::IUIX_Obj* owner, QObject* parent,
                   CommandGate gate = {});
    ~CommandActions() override;

    /// The action of a command, the same one for as long as this lives, whatever comes and goes under the command's name. It is
    /// invisible while there is no such command. Its object name is the command's name, its tool tip shows letter by letter.
    QAction* ActionOf(DWORD id);
    /// The number of the command of an action; 0 for one that was made elsewhere.
    static DWORD IdOf(const QAction& action);

    /// Asks all handlers at once whether their commands can be used now.
    void AskStates();
    /// Asks for those among `actions` that are commands; before they are shown.
    void AskStates(const QList<QAction*>& actions);
    /// Looks all texts up again, in another language.
    void ShowTexts();
    /// Lets go of owner and commands: from now on the actions do nothing.
    void CutOff();

    KOV::IKOV_Inst& Host() const noexcept { return m_host; }

private:
    void CommandAdded(DWORD id) override;
    void CommandChanged(DWORD id) override { Show(id); }
    void CommandRemoved(DWORD id) override { Show(id); }
    void StatesMarked(const std::vector<DWORD>& ids) override;

    std::vector<DWORD> Ids() const;
    void Show(DWORD id);
    void AskStatesOf(const std::vector<DWORD>& ids);

    ComPtr<CommandCollection> m_commands;
    KOV::IKOV_Inst& m_host;
    ComPtr<KOV::IUIX_Obj> m_owner;
    const CommandGate m_gate;
    /// Children of this.
    std::map<DWORD, QAction*> m_actions;
};
