#include "workbench/console/terminal.h"

#include <cerrno>
#include <charconv>
#include <iostream>

#include <fmt/format.h>
#include <termios.h>
#include <unistd.h>

#include "platform/text.h"
#include "workbench/console/interrupt.h"
#include "workbench/console/usage_error.h"

namespace {

std::wstring Replaced(std::wstring text, const std::wstring& from, const std::wstring& to) {
    for (std::size_t at = text.find(from); at != std::wstring::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// A text without marks for bold type and accelerators, as a terminal shows it.
std::string Plain(const std::wstring& text) {
    std::wstring plain = Replaced(Replaced(text, L"<b>", L""), L"</b>", L"");
    std::wstring result;
    for (std::size_t i = 0; i < plain.size(); ++i) {
        if (plain[i] == L'&' && i + 1 < plain.size()) {
            ++i;
        }
        const bool is_control = plain[i] != L'\n' && (plain[i] < 0x20 || plain[i] == 0x7F);
        result += is_control ? L'\uFFFD' : plain[i];
    }
    return Utf8FromWide(result);
}

/// The message of a box keeps its ampersands: only items have accelerators.
std::string PlainMessage(const std::wstring& text) { return Plain(Replaced(text, L"&", L"&&")); }

std::vector<std::string> Keys(const std::vector<BoxItem>& items) {
    std::vector<std::string> keys;
    for (const BoxItem& item : items) {
        keys.push_back(Utf8FromWide(item.key.empty() ? item.title : item.key));
    }
    return keys;
}

Record BoxRecord(const Box& box, const BoxAnswer& answer) {
    Record record = {{"text", Utf8FromWide(box.text)}, {"buttons", Keys(box.buttons)}};
    if (box.check) {
        record.push_back({"check", Utf8FromWide(box.check->item.key)});
    }
    if (!box.radios.empty()) {
        record.push_back({"radios", Keys(box.radios)});
    }
    if (box.edit) {
        record.push_back({"edit", Utf8FromWide(box.edit->text)});
    }
    record.push_back({"answer", answer.button ? FieldValue(static_cast<std::int64_t>(*answer.button)) : FieldValue(nullptr)});
    return record;
}

std::string BoxText(const Box& box) {
    std::string text = "? " + PlainMessage(box.text);
    for (std::size_t i = 0; i < box.buttons.size(); ++i) {
        text += fmt::format("\n  [{}] {}", i, Plain(box.buttons[i].title));
    }
    for (std::size_t i = 0; i < box.radios.size(); ++i) {
        text += fmt::format("\n  ({}) radio={}: {}", i == box.radio ? "*" : " ", i, Plain(box.radios[i].title));
    }
    if (box.edit) {
        text += fmt::format("\n  {} {}", Plain(box.edit->label.title), Utf8FromWide(box.edit->text));
    }
    if (box.check) {
        text += fmt::format("\n  [{}] check: {}", box.check->is_checked ? "x" : " ", Plain(box.check->item.title));
    }
    return text;
}

bool HasTerminal() { return isatty(STDIN_FILENO) != 0; }

/// Nothing at the end of the input, and after Ctrl-C. Byte by byte, past all buffers, since these can't be waited for.
std::optional<std::string> ReadLine(const std::string& prompt) {
    std::cerr << prompt << std::flush;
    std::string line;
    while (WaitForInput(STDIN_FILENO)) {
        char byte = 0;
        const ssize_t count = read(STDIN_FILENO, &byte, 1);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0) {
            return line.empty() ? std::nullopt : std::optional(line);
        }
        if (byte == '\n') {
            return line;
        }
        line += byte;
    }
    std::cerr << '\n';
    return std::nullopt;
}

/// The terminal as it was before typing was hidden.
std::mutex typing_lock;
std::optional<termios> shown_typing;

/// Keeps what is typed off the screen while it lives.
class HiddenTyping {
public:
    HiddenTyping() {
        const std::lock_guard guard(typing_lock);
        termios before{};
        if (tcgetattr(STDIN_FILENO, &before) == 0) {
            termios hidden = before;
            hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            if (tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden) == 0) {
                shown_typing = before;
            }
        }
    }
    ~HiddenTyping() { ShowTypingAgain(); }
    HiddenTyping(const HiddenTyping&) = delete;
    HiddenTyping& operator=(const HiddenTyping&) = delete;
};

} // namespace

void ShowTypingAgain() {
    const std::lock_guard guard(typing_lock);
    if (shown_typing) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &*shown_typing);
        shown_typing.reset();
        (void)!write(STDERR_FILENO, "\n", 1);
    }
}

void Terminal::Queue(Answer answer) {
    const std::lock_guard guard(m_lock);
    m_answers.push_back(std::move(answer));
}

std::optional<Answer> Terminal::NextAnswer() {
    const std::lock_guard guard(m_lock);
    if (m_answers.empty()) {
        return std::nullopt;
    }
    Answer answer = std::move(m_answers.front());
    m_answers.pop_front();
    return answer;
}

BoxAnswer Terminal::Ask(const Box& box) {
    if (m_silences > 0) {
        return UnansweredBox(box);
    }
    const std::lock_guard one_question(m_question_lock);
    const std::optional<Answer> prepared = NextAnswer();
    const BoxAnswer answer = prepared ? Apply(box, *prepared) : HasTerminal() ? AskPerson(box) : UnansweredBox(box);
    Show(box, answer);
    return answer;
}

BoxAnswer Terminal::Apply(const Box& box, const Answer& answer) {
    BoxAnswer result = UnansweredBox(box);
    if (answer.button >= box.buttons.size() || (answer.radio && *answer.radio >= box.radios.size())) {
        m_output.WriteNote(
            fmt::format("kov-console: the answer {} doesn't fit the question; it stays unanswered", answer.button));
        return result;
    }
    result.button = answer.button;
    result.is_checked = box.check && answer.check;
    result.radio = answer.radio.value_or(box.radio);
    if (box.edit && answer.edit) {
        result.edit = WideFromUtf8(*answer.edit);
    }
    return result;
}

BoxAnswer Terminal::AskPerson(const Box& box) {
    std::cerr << BoxText(box) << '\n';
    for (;;) {
        const std::optional<std::string> line = ReadLine(fmt::format("answer [{}]: ", box.default_button));
        if (!line) {
            return UnansweredBox(box);
        }
        try {
            const Answer answer = ParseAnswer(line->empty() ? std::to_string(box.default_button) : *line);
            const BoxAnswer result = Apply(box, answer);
            if (result.button) {
                return result;
            }
        } catch (const UsageError& error) {
            m_output.WriteNote(error.what());
        }
    }
}

void Terminal::Show(const Box& box, const BoxAnswer& answer) {
    const std::string answered =
        answer.button ? fmt::format("\n> {}", Plain(box.buttons[*answer.button].title)) : std::string("\n> (no answer)");
    m_output.WriteBox(BoxRecord(box, answer), BoxText(box) + answered);
}

std::optional<AccountAnswer> AccountSource::Ask(const AccountDemand& demand) {
    const std::lock_guard guard(m_lock);
    const bool was_asked = m_prepared.WasAsked(demand.host);
    if (std::optional<AccountAnswer> prepared = m_prepared.AnswerTo(demand)) {
        return prepared;
    }
    if (!was_asked && m_user && !m_has_password_file) {
        const HiddenTyping hidden;
        const std::string prompt = "Password for " + *m_user + ": ";
        return AccountAnswer{WideFromUtf8(*m_user), WideFromUtf8(HasTerminal() ? ReadLine(prompt).value_or("") : "")};
    }
    if (!HasTerminal() || m_user) {
        // What follows is only told as "canceled".
        std::cerr << fmt::format("kov-console: {} {}\n", Utf8FromWide(demand.host),
                                 was_asked ? "refused the account" : "wants an account; --user and --password-file give one");
        return std::nullopt;
    }
    return AskPerson(demand);
}

std::optional<AccountAnswer> AccountSource::AskPerson(const AccountDemand& demand) const {
    std::cerr << fmt::format("{} wants an account ({}).\n", Utf8FromWide(demand.host), Utf8FromWide(demand.status_text));
    const std::optional<std::string> user = ReadLine(fmt::format("User [{}]: ", Utf8FromWide(demand.user)));
    if (!user) {
        return std::nullopt;
    }
    const HiddenTyping hidden;
    const std::optional<std::string> password = ReadLine("Password: ");
    if (!password) {
        return std::nullopt;
    }
    return AccountAnswer{user->empty() ? demand.user : WideFromUtf8(*user), WideFromUtf8(*password)};
}
