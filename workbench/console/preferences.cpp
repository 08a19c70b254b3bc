// The preferences stand in the module's settings cab, in one dictionary a layout. The module reads the newest layout that was
// written; what is changed here is written in the newest one, and holds from the next start on.

#include "workbench/console/preferences.h"

#include <charconv>

#include <fmt/format.h>

#include "platform/bstr.h"
#include "platform/text.h"
#include "workbench/console/usage_error.h"
#include "workbench/core/failure.h"

namespace {

enum class Kind { number, text, boolean };

struct Preference {
    const char* name;
    Kind kind;
    /// What a reset writes.
    const char* reset_value;
    /// The lowest and highest number.
    std::uint32_t least = 0;
    std::uint32_t most = 63;
};

constexpr const char* default_hidden_paths =
    "_catalogs|_cts|_private|Access Requests|FormServerTemplates|images|IWConvertedForms|m|ProjectPolicyItemList|Sharing Links|"
    "SiteAssets|SitePages|Style Library|/Documents/Forms|/Documents/m|blog.xsl|default.aspx|*/AllItems.aspx|*/default.aspx|"
    "*/DispForm.aspx|*/EditForm.aspx|*/newsfeed.aspx|*/NewForm.aspx|*/blog.xsl";

constexpr Preference preferences[] = {
    {"on_open_without_write_permissions", Kind::number, "6"},
    {"on_open_checked_out_none", Kind::number, "6"},
    {"on_open_checked_out_me", Kind::number, "2"},
    {"on_open_checked_out_other", Kind::number, "6"},
    {"on_after_save", Kind::number, "1"},
    {"on_save_conflict", Kind::number, "1"},
    {"on_close_checked_out_need_check_in", Kind::number, "1"},
    {"on_close_checked_out_no_need_check_in", Kind::number, "0"},
    {"default_check_in_type", Kind::number, "1", 0, 2},
    {"default_check_in_message", Kind::text, ""},
    {"hide_paths", Kind::boolean, "false"},
    {"hidden_paths", Kind::text, default_hidden_paths},
    {"log_level", Kind::number, "0", 0, 4},
    {"days_to_store_logs", Kind::number, "10", 0, 999},
};

const Preference& FindPreference(const std::string& name) {
    for (const Preference& preference : preferences) {
        if (name == preference.name) {
            return preference;
        }
    }
    throw UsageError("there is no preference '" + name + "'; 'prefs list' shows them");
}

ComPtr<KOV::IAUX_CabItem> Child(KOV::IAUX_CabItem* parent, const char* name) {
    const std::wstring text = WideFromUtf8(name);
    VARIANT key{};
    key.vt = VT_LPWSTR;
    key.pwszVal = const_cast<wchar_t*>(text.c_str());
    ComPtr<KOV::IAUX_CabItem> item;
    if (parent != nullptr) {
        (void)parent->GetItem(&key, &item);
    }
    return item;
}

DWORD TypeOf(KOV::IAUX_CabItem* item) {
    DWORD type = KOV::CabItemType_Unset;
    if (item != nullptr) {
        (void)item->get_Type(&type);
    }
    return type;
}

std::uint32_t Number(KOV::IAUX_CabItem* item) {
    LONG value = 0;
    if (TypeOf(item) == KOV::CabItemType_Int) {
        Check(item->get_Int(&value));
    }
    return static_cast<std::uint32_t>(value);
}

bool Boolean(KOV::IAUX_CabItem* item) {
    VARIANT_BOOL value = VARIANT_FALSE;
    if (TypeOf(item) == KOV::CabItemType_Bool) {
        Check(item->get_Bool(&value));
    }
    return value != VARIANT_FALSE;
}

std::string Text(KOV::IAUX_CabItem* item) {
    Bstr value;
    if (TypeOf(item) == KOV::CabItemType_String) {
        Check(item->get_String(&value));
    }
    return Utf8FromWide(value.View());
}

std::string ReadValue(const Preference& preference, KOV::IAUX_CabItem* item) {
    switch (preference.kind) {
    case Kind::number:
        return std::to_string(Number(item));
    case Kind::boolean:
        return Boolean(item) ? "true" : "false";
    default:
        return Text(item);
    }
}

/// The dictionary that the module reads: the newest layout that somebody wrote, else the oldest, which has defaults.
ComPtr<KOV::IAUX_CabItem> EffectiveLayout(KOV::IAUX_CabItem* settings, std::uint32_t& out_version) {
    const ComPtr<KOV::IAUX_CabItem> v4 = Child(settings, "PreferencesV4");
    const ComPtr<KOV::IAUX_CabItem> v3 = Child(settings, "PreferencesV3");
    const ComPtr<KOV::IAUX_CabItem> v2 = Child(settings, "PreferencesV2");
    if (Number(Child(v4, "version")) >= 4) {
        out_version = 4;
        return v4;
    }
    if (Number(Child(v3, "version")) >= 3) {
        out_version = 3;
        return v3;
    }
    const bool has_v2 = !Boolean(Child(v2, "default"));
    out_version = has_v2 ? 2 : 1;
    return has_v2 ? v2 : Child(settings, "PreferencesV1");
}

/// Does this layout hold the preference? One that came later has its reset value.
bool IsInLayout(const Preference& preference, std::uint32_t version) {
    const std::string name = preference.name;
    if (name == "hide_paths" || name == "hidden_paths") {
        return version >= 4;
    }
    if (name.starts_with("default_check_in")) {
        return version >= 3;
    }
    return name != "log_level" || version >= 2;
}

std::string EffectiveValue(const Context& context, const Preference& preference) {
    const ComPtr<KOV::IAUX_Cab> settings = context.host.Settings();
    std::uint32_t version = 0;
    const ComPtr<KOV::IAUX_CabItem> layout = EffectiveLayout(settings, version);
    return IsInLayout(preference, version) ? ReadValue(preference, Child(layout, preference.name)) : preference.reset_value;
}

std::uint32_t ParseNumber(const Preference& preference, const std::string& text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || value < preference.least || value > preference.most) {
        throw UsageError(fmt::format("'{}' is no value of {}: a number from {} to {}", text, preference.name, preference.least,
                                     preference.most));
    }
    return value;
}

void WriteValue(KOV::IAUX_CabItem* layout, const Preference& preference, const std::string& text) {
    const ComPtr<KOV::IAUX_CabItem> item = Child(layout, preference.name);
    if (item.IsNull()) {
        throw Failure{E_FAIL, L"The settings have no place for this preference."};
    }
    switch (preference.kind) {
    case Kind::number:
        Check(item->put_Int(static_cast<LONG>(ParseNumber(preference, text))));
        break;
    case Kind::boolean:
        if (text != "true" && text != "false") {
            throw UsageError(fmt::format("'{}' is no value of {}: true or false", text, preference.name));
        }
        Check(item->put_Bool(text == "true" ? VARIANT_TRUE : VARIANT_FALSE));
        break;
    case Kind::text:
        Check(item->put_String(WideFromUtf8(text).c_str()));
        break;
    }
}

/// Writes all of the newest layout, so that it is what the module reads from then on.
void WriteAll(const Context& context, const std::vector<std::string>& values) {
    const ComPtr<KOV::IAUX_Cab> settings = context.host.Settings();
    const ComPtr<KOV::IAUX_CabItem> layout = Child(settings, "PreferencesV4");
    for (std::size_t i = 0; i < std::size(preferences); ++i) {
        WriteValue(layout, preferences[i], values[i]);
    }
    const ComPtr<KOV::IAUX_CabItem> version = Child(layout, "version");
    if (!version.IsNull()) {
        Check(version->put_Int(4));
    }
}

void Show(const Context& context, const Preference& preference) {
    const std::string text = EffectiveValue(context, preference);
    FieldValue value = text;
    if (preference.kind == Kind::number) {
        value = static_cast<std::int64_t>(std::stoul(text));
    } else if (preference.kind == Kind::boolean) {
        value = text == "true";
    }
    context.output.Write({{"name", std::string(preference.name)}, {"value", value}},
                         fmt::format("{} = {}", preference.name, text));
}

std::vector<std::string> AllValues(const Context& context) {
    std::vector<std::string> values;
    for (const Preference& preference : preferences) {
        values.push_back(EffectiveValue(context, preference));
    }
    return values;
}

void Set(const Context& context, const std::string& name, const std::string& value) {
    const Preference& changed = FindPreference(name);
    std::vector<std::string> values = AllValues(context);
    values[static_cast<std::size_t>(&changed - preferences)] = value;
    WriteAll(context, values);
    Show(context, changed);
}

void Reset(const Context& context) {
    std::vector<std::string> values;
    for (const Preference& preference : preferences) {
        values.emplace_back(preference.reset_value);
    }
    WriteAll(context, values);
}

void RequireWords(const CommandCall& call, std::size_t count) {
    if (call.words.size() != count) {
        throw UsageError("usage: prefs list | get NAME | set NAME VALUE | reset");
    }
}

} // namespace

void RunPreferences(const Context& context, const CommandCall& call) {
    const std::string& action = call.words[0];
    if (action == "list" || action == "reset") {
        RequireWords(call, 1);
        if (action == "reset") {
            Reset(context);
        }
        for (const Preference& preference : preferences) {
            Show(context, preference);
        }
    } else if (action == "get") {
        RequireWords(call, 2);
        Show(context, FindPreference(call.words[1]));
    } else if (action == "set") {
        RequireWords(call, 3);
        Set(context, call.words[1], call.words[2]);
    } else {
        RequireWords(call, 0);
    }
}
