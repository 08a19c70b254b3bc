#include "workbench/desktop/boxes/desktop_questions.h"

#include <QPointer>

#include "workbench/desktop/boxes/account_dialog.h"
#include "workbench/desktop/boxes/box_dialog.h"

namespace {

/// Runs `dialog` until it ends; its answer, or `otherwise` when it went away with the window below it.
template <class Dialog, class Answer>
Answer AnswerOf(Dialog* dialog, Answer otherwise) {
    const QPointer<Dialog> shown = dialog;
    {
        const OpenQuestion open;
        dialog->exec();
    }
    if (shown.isNull()) {
        return otherwise;
    }
    const Answer answer = shown->Answer();
    delete shown;
    return answer;
}

} // namespace

BoxAnswer DesktopQuestions::Ask(const Box& box) {
    BoxAnswer answer = UnansweredBox(box);
    (void)m_loop.Call(
        [&] {
            answer = AnswerOf(new BoxDialog(box, FrontWindow(m_main_window)), answer);
            return S_OK;
        },
        -1);
    return answer;
}

std::optional<AccountAnswer> DesktopAccountPrompt::Ask(const AccountDemand& demand) {
    std::optional<AccountAnswer> answer;
    (void)m_loop.Call(
        [&] {
            std::wstring& user = m_users[demand.host];
            AccountDemand shown = demand;
            if (shown.user.empty()) {
                shown.user = user;
            }
            answer = AnswerOf(new AccountDialog(shown, FrontWindow(m_main_window)), answer);
            if (answer) {
                user = answer->user;
            }
            return S_OK;
        },
        -1);
    return answer;
}
