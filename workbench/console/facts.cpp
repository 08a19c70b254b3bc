#include "workbench/console/facts.h"

#include <fmt/format.h>

#include "platform/bstr.h"
#include "platform/text.h"
#include "platform/times.h"
#include "workbench/core/failure.h"

namespace {

FieldValue TextOrNull(const std::optional<std::string>& text) { return text ? FieldValue(*text) : FieldValue(nullptr); }

} // namespace

Facts FactsOf(const Context& context, KOV::IAFS_Name* name) {
    ComPtr<KOV::IAFS_FileInfo> info;
    try {
        Checked([&](KOV::IString* details) { return context.Provider()->GetFileInfo(name, details, context.Cancel(), &info); });
    } catch (const Failure& failure) {
        // The provider's answer to "nothing is there" is about its arguments; a person wants to hear of the location.
        if (failure.result == E_INVALIDARG) {
            context.output.WriteNote("kov-console: nothing was found at " + EncodeLocation(UrlOf(context.Provider(), name)));
        }
        throw;
    }
    return ReadFacts(context, info, name);
}

std::optional<std::string> Rfc3339(ULONGLONG time) {
    const FILETIME file_time{static_cast<DWORD>(time), static_cast<DWORD>(time >> 32)};
    SYSTEMTIME fields{};
    if (time == 0 || !FileTimeToSystemTime(&file_time, &fields)) {
        return std::nullopt;
    }
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}Z", fields.wYear, fields.wMonth, fields.wDay, fields.wHour,
                       fields.wMinute, fields.wSecond);
}

Record FactsRecord(const Facts& facts) {
    return {{"title", Utf8FromWide(facts.title)},
            {"url", EncodeLocation(facts.url)},
            {"folder", facts.is_folder},
            {"size", facts.is_folder ? FieldValue(nullptr) : FieldValue(static_cast<std::int64_t>(facts.size))},
            {"created", TextOrNull(Rfc3339(facts.created))},
            {"modified", TextOrNull(Rfc3339(facts.modified))}};
}

std::string FactsText(const Facts& facts) {
    return fmt::format("{:20}  {:>12}  {}{}", Rfc3339(facts.modified).value_or("-"),
                       facts.is_folder ? std::string("folder") : std::to_string(facts.size), Printable(facts.title),
                       facts.is_folder ? "/" : "");
}
