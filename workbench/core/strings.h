#pragma once

/// Texts by key, and numbers by name. Any thread.

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

/// The host's own texts and those of the tables that modules hand over.
class Strings {
public:
    Strings();

    /// Takes over a string table: `<Localization>` with a `<Module namespace="n">` and rows `<text id="x">` in `<Strings>`; the
    /// row is then known as "n.x". UTF-8, at most 4 MiB. Throws `HostException` for a broken table, and takes over nothing then.
    void Load(std::string_view xml);

    /// The text of a key, and remembers that the key was asked for.
    std::optional<std::wstring> Text(std::wstring_view key);
    /// The text behind "$$$.key", or the text itself.
    std::wstring Resolve(std::wstring_view text) const;
    /// The key that was last answered with this text; empty when there is none. A message box record names its first
    /// button "ok" whatever its key was, and other texts have no key in it at all.
    std::wstring KeyOf(std::wstring_view text) const;

private:
    mutable std::mutex m_lock;
    std::map<std::wstring, std::wstring, std::less<>> m_texts;
    std::map<std::wstring, std::wstring, std::less<>> m_last_keys;
};

/// Numbers of names, from 1000 up; "ok" is 1.
class NameIds {
public:
    /// The one table of the program: a module keeps numbers beyond the life of the host that gave them.
    static NameIds& OfProcess();

    NameIds();
    /// Nothing for an unknown name, unless `create`.
    std::optional<DWORD> Find(std::wstring_view name, bool create);

private:
    std::mutex m_lock;
    std::map<std::wstring, DWORD, std::less<>> m_ids;
};
