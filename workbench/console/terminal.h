#pragma once

/// The person before the program, or the answers that a script prepared: questions, and demands for an account.

#include <atomic>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>

#include "workbench/console/answer.h"
#include "workbench/console/output.h"
#include "workbench/core/prepared_account.h"
#include "workbench/core/questions.h"

/// Shows again what is typed, where a prompt for a password is still open: before the program ends in the middle of it.
void ShowTypingAgain();

/// Answers questions with what was prepared, in order; then, on a terminal, by asking; else not at all. Every question that is
/// put is shown with its answer.
class Terminal final : public Questions {
public:
    explicit Terminal(Output& output) : m_output(output) {}

    void Queue(Answer answer);
    BoxAnswer Ask(const Box& box) override;

    /// While one lives, questions stay unanswered and unseen, and what was prepared waits.
    class Silence {
    public:
        explicit Silence(Terminal& terminal) : m_terminal(terminal) { ++m_terminal.m_silences; }
        ~Silence() { --m_terminal.m_silences; }
        Silence(const Silence&) = delete;
        Silence& operator=(const Silence&) = delete;

    private:
        Terminal& m_terminal;
    };

private:
    std::optional<Answer> NextAnswer();
    BoxAnswer Apply(const Box& box, const Answer& answer);
    BoxAnswer AskPerson(const Box& box);
    void Show(const Box& box, const BoxAnswer& answer);

    Output& m_output;
    std::mutex m_question_lock;
    std::mutex m_lock;
    std::deque<Answer> m_answers;
    std::atomic<int> m_silences = 0;
};

/// Answers demands for an account: the first of a host with the account that a URL carried or that the options name, all else by
/// asking on a terminal. A host that refused what was prepared isn't sent it again: servers lock accounts that try.
class AccountSource final : public AccountPrompt {
public:
    AccountSource(const std::optional<std::string>& user, const std::optional<std::filesystem::path>& password_file)
        : m_user(user), m_has_password_file(password_file), m_prepared(user, password_file) {}

    /// The account of a URL that was just read; empty texts mean none.
    void SetUrlAccount(const std::wstring& user, const std::wstring& password) { m_prepared.SetUrlAccount(user, password); }

    std::optional<AccountAnswer> Ask(const AccountDemand& demand) override;

private:
    std::optional<AccountAnswer> AskPerson(const AccountDemand& demand) const;

    const std::optional<std::string> m_user;
    const bool m_has_password_file;
    PreparedAccount m_prepared;
    std::mutex m_lock;
};
