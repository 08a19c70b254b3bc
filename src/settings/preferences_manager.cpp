#include "settings/preferences_manager.h"

#include "frame/diagnostics/diagnostics.h"
#include "frame/plugin.h"
#include "host/instance.h"
#include "settings/cab_node.h"

namespace {

constexpr std::int32_t stored_version = 4;
constexpr std::uint32_t highest_check_in_type = 2;
constexpr wchar_t pattern_separator = L'|';

struct NumberField {
    const wchar_t* key;
    std::uint32_t Preferences::*field;
};

// In the order in which they are written.
constexpr NumberField action_fields[] = {
    {L"on_open_without_write_permissions", &Preferences::on_open_without_write_permissions},
    {L"on_open_checked_out_none", &Preferences::on_open_checked_out_none},
    {L"on_open_checked_out_me", &Preferences::on_open_checked_out_me},
    {L"on_open_checked_out_other", &Preferences::on_open_checked_out_other},
    {L"on_after_save", &Preferences::on_after_save},
    {L"on_save_conflict", &Preferences::on_save_conflict},
    {L"on_close_checked_out_need_check_in", &Preferences::on_close_checked_out_need_check_in},
    {L"on_close_checked_out_no_need_check_in", &Preferences::on_close_checked_out_no_need_check_in},
};

/// The block that holds the user's values, and the version of its layout. Each version added keys to the one before.
struct StoredBlock {
    CabNode node;
    int layout;
};

StoredBlock FindStoredBlock(const CabNode& settings) {
    const CabNode version4 = settings[L"PreferencesV4"];
    if (version4[L"version"].GetInt() >= 4) {
        return {version4, 4};
    }
    const CabNode version3 = settings[L"PreferencesV3"];
    if (version3[L"version"].GetInt() >= 3) {
        return {version3, 3};
    }
    const CabNode version2 = settings[L"PreferencesV2"];
    if (!version2[L"default"].GetBool()) {
        return {version2, 2};
    }
    return {settings[L"PreferencesV1"], 1};
}

std::wstring JoinPatterns(const std::vector<std::wstring>& patterns) {
    std::wstring text;
    for (const std::wstring& pattern : patterns) {
        if (&pattern != &patterns.front()) {
            text += pattern_separator;
        }
        text += pattern;
    }
    return text;
}

std::vector<std::wstring> SplitPatterns(std::wstring_view text) {
    std::vector<std::wstring> patterns;
    while (!text.empty()) {
        const std::size_t length = text.find(pattern_separator);
        if (length != 0) {
            patterns.emplace_back(text.substr(0, length));
        }
        text.remove_prefix(length == text.npos ? text.size() : length + 1);
    }
    return patterns;
}

std::uint32_t InRangeOr(std::int32_t value, std::uint32_t highest, std::uint32_t otherwise) {
    const auto number = static_cast<std::uint32_t>(value);
    return number > highest ? otherwise : number;
}

Preferences ReadPreferences(const StoredBlock& block) {
    const CabNode& node = block.node;
    Preferences read = g_default_preferences;
    if (block.layout >= 4) {
        read.hide_paths = node[L"hide_paths"].GetBool();
        read.hidden_paths = SplitPatterns(node[L"hidden_paths"].GetString().View());
    }
    if (block.layout >= 3) {
        read.default_check_in_type = InRangeOr(node[L"default_check_in_type"].GetInt(), highest_check_in_type,
                                               g_default_preferences.default_check_in_type);
        read.default_check_in_message = node[L"default_check_in_message"].GetString().Text();
    }
    if (block.layout >= 2) {
        read.log_level = InRangeOr(node[L"log_level"].GetInt(), LogLevel::verbose, g_default_preferences.log_level);
    }
    for (const NumberField& row : action_fields) {
        read.*row.field = static_cast<std::uint32_t>(node[row.key].GetInt());
    }
    read.days_to_store_logs = static_cast<std::uint32_t>(node[L"days_to_store_logs"].GetInt());
    return read;
}

} // namespace

PreferencesManager::PreferencesManager(Plugin* plugin) : m_preferences(g_default_preferences), m_plugin(plugin) {}

void PreferencesManager::Load() {
    TRACE_ENTER();
    ComPtr<KOV::IAUX_Cab> settings;
    CHECK_CALL_OR_RETURN_VALUE(m_plugin->m_kov_inst->GetPluginSettings(m_plugin, VARIANT_TRUE, &settings), void(0));
    CHECK_OR_RETURN_VALUE(!settings.IsNull(), void(0));
    Replace(ReadPreferences(FindStoredBlock(CabNode(settings))));
    TRACE_LEAVE();
}

// Older blocks stay as they were: an older version of the module may still be in use on the same store.
void PreferencesManager::Save() {
    TRACE_ENTER();
    ComPtr<KOV::IAUX_Cab> settings;
    CHECK_CALL_OR_RETURN_VALUE(m_plugin->m_kov_inst->GetPluginSettings(m_plugin, VARIANT_TRUE, &settings), void(0));
    CHECK_OR_RETURN_VALUE(!settings.IsNull(), void(0));
    const Preferences preferences = Snapshot();
    const CabNode node = CabNode(settings)[L"PreferencesV4"];
    node[L"version"].SetInt(stored_version);
    for (const NumberField& row : action_fields) {
        node[row.key].SetInt(static_cast<std::int32_t>(preferences.*row.field));
    }
    node[L"default_check_in_type"].SetInt(static_cast<std::int32_t>(preferences.default_check_in_type));
    node[L"default_check_in_message"].SetString(preferences.default_check_in_message.c_str());
    node[L"log_level"].SetInt(static_cast<std::int32_t>(preferences.log_level));
    node[L"days_to_store_logs"].SetInt(static_cast<std::int32_t>(preferences.days_to_store_logs));
    node[L"hide_paths"].SetBool(preferences.hide_paths);
    node[L"hidden_paths"].SetString(JoinPatterns(preferences.hidden_paths).c_str());
    TRACE_LEAVE();
}
