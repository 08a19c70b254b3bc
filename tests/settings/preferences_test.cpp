#include "settings/preferences_manager.h"

#include <gtest/gtest.h>

#include "editor/recording_host.h"
#include "frame/log_recorder.h"
#include "settings/cab_node.h"
#include "support/in_process_module.h"

namespace {

using Numbers = std::vector<std::uint32_t>;

Numbers OnFields(const Preferences& p) {
    return {p.on_open_without_write_permissions,
            p.on_open_checked_out_none,
            p.on_open_checked_out_me,
            p.on_open_checked_out_other,
            p.on_after_save,
            p.on_save_conflict,
            p.on_close_checked_out_need_check_in,
            p.on_close_checked_out_no_need_check_in};
}

constexpr const wchar_t* on_keys[] = {
    L"on_open_without_write_permissions",
    L"on_open_checked_out_none",
    L"on_open_checked_out_me",
    L"on_open_checked_out_other",
    L"on_after_save",
    L"on_save_conflict",
    L"on_close_checked_out_need_check_in",
    L"on_close_checked_out_no_need_check_in",
};

struct PreferencesTest : testing::Test {
    Preferences Load() {
        PreferencesManager manager(module.plugin);
        manager.Load();
        return manager.m_preferences;
    }
    CabNode Block(const wchar_t* id) { return CabNode(module.Settings())[id]; }

    InProcessModule module;
};

TEST_F(PreferencesTest, TheFirstRunTakesTheSchemasDefaults) {
    const Preferences loaded = Load();
    EXPECT_EQ(OnFields(loaded), (Numbers{6, 6, 2, 6, 24, 1, 1, 0}));
    EXPECT_EQ(loaded.days_to_store_logs, 10u);
    EXPECT_EQ(loaded.log_level, 0u);
    EXPECT_EQ(loaded.default_check_in_type, 1u);
    EXPECT_EQ(loaded.default_check_in_message, L"");
    EXPECT_FALSE(loaded.hide_paths);
    EXPECT_EQ(loaded.hidden_paths, g_default_preferences.hidden_paths);
    EXPECT_EQ(OnFields(g_default_preferences), (Numbers{6, 6, 2, 6, 1, 1, 1, 0}));
}

TEST_F(PreferencesTest, SaveThenLoadKeepsEveryField) {
    PreferencesManager manager(module.plugin);
    Preferences& changed = manager.m_preferences;
    changed = {.on_open_without_write_permissions = 1,
               .on_open_checked_out_none = 9,
               .on_open_checked_out_me = 0x80000000,
               .on_open_checked_out_other = 5,
               .on_after_save = 16,
               .on_save_conflict = 32,
               .on_close_checked_out_need_check_in = 8,
               .on_close_checked_out_no_need_check_in = 1,
               .default_check_in_type = 2,
               .default_check_in_message = L"R\u00e9vision <1> & more",
               .hide_paths = true,
               .hidden_paths = {L"*/a b.xsl", L"m"},
               .log_level = 4,
               .days_to_store_logs = 0};
    manager.Save();
    const Preferences loaded = Load();
    EXPECT_EQ(OnFields(loaded), OnFields(changed));
    EXPECT_EQ(loaded.default_check_in_type, 2u);
    EXPECT_EQ(loaded.default_check_in_message, changed.default_check_in_message);
    EXPECT_TRUE(loaded.hide_paths);
    EXPECT_EQ(loaded.hidden_paths, changed.hidden_paths);
    EXPECT_EQ(loaded.log_level, 4u);
    EXPECT_EQ(loaded.days_to_store_logs, 0u);
    EXPECT_EQ(Block(L"PreferencesV4")[L"version"].GetInt(), 4);
    EXPECT_EQ(Block(L"PreferencesV3")[L"version"].GetInt(), 0) << "an older block was touched";
    EXPECT_EQ(Block(L"PreferencesV1")[L"on_after_save"].GetInt(), 24) << "an older block was touched";
}

TEST_F(PreferencesTest, HiddenPathsRoundTripThroughTheirSeparator) {
    struct Row {
        std::vector<std::wstring> saved;
        std::vector<std::wstring> loaded;
    };
    const Row rows[] = {
        {{}, {}},
        {{L"_cts"}, {L"_cts"}},
        {{L"a", L"b", L"c"}, {L"a", L"b", L"c"}},
        {{L"a|b"}, {L"a", L"b"}},
        {{L"", L"a", L"", L""}, {L"a"}},
        {g_default_preferences.hidden_paths, g_default_preferences.hidden_paths},
    };
    for (const Row& row : rows) {
        PreferencesManager manager(module.plugin);
        manager.m_preferences.hidden_paths = row.saved;
        manager.Save();
        EXPECT_EQ(Load().hidden_paths, row.loaded) << testing::PrintToString(row.saved.size());
    }
}

// Each block is filled with its own numbers, so a value tells from where it was read.
TEST_F(PreferencesTest, OlderLayoutsAreReadAsLongAsNoNewerOneWasStored) {
    constexpr const wchar_t* blocks[] = {L"PreferencesV1", L"PreferencesV2", L"PreferencesV3", L"PreferencesV4"};
    for (std::int32_t version = 1; version <= 4; ++version) {
        const CabNode block = Block(blocks[version - 1]);
        for (const wchar_t* key : on_keys) {
            block[key].SetInt(version * 10);
        }
        block[L"days_to_store_logs"].SetInt(version * 100);
        block[L"log_level"].SetInt(version - 1);
        block[L"default_check_in_type"].SetInt(version == 3 ? 0 : 2);
        block[L"default_check_in_message"].SetString(version == 3 ? L"of 3" : L"of 4");
        block[L"hide_paths"].SetBool(true);
        block[L"hidden_paths"].SetString(L"x");
    }
    struct Row {
        std::int32_t version4;
        std::int32_t version3;
        bool default2;
        std::uint32_t read;
    };
    constexpr Row rows[] = {
        {4, 3, false, 4}, {5, 0, true, 4},   {3, 3, false, 3}, {0, 7, true, 3},
        {0, 2, false, 2}, {-1, 0, false, 2}, {0, 0, true, 1},
    };
    for (const Row& row : rows) {
        Block(L"PreferencesV4")[L"version"].SetInt(row.version4);
        Block(L"PreferencesV3")[L"version"].SetInt(row.version3);
        Block(L"PreferencesV2")[L"default"].SetBool(row.default2);
        SCOPED_TRACE(testing::Message() << row.version4 << ' ' << row.version3 << ' ' << row.default2);
        const Preferences loaded = Load();
        EXPECT_EQ(OnFields(loaded), Numbers(8, row.read * 10));
        EXPECT_EQ(loaded.days_to_store_logs, row.read * 100);
        EXPECT_EQ(loaded.log_level, row.read == 1 ? 0 : row.read - 1);
        EXPECT_EQ(loaded.default_check_in_type, row.read == 4 ? 2u : row.read == 3 ? 0u : 1u);
        EXPECT_EQ(loaded.default_check_in_message, row.read == 4 ? L"of 4" : row.read == 3 ? L"of 3" : L"");
        EXPECT_EQ(loaded.hide_paths, row.read == 4);
        EXPECT_EQ(loaded.hidden_paths.size(), row.read == 4 ? 1u : 24u);
    }
}

TEST_F(PreferencesTest, NumbersOutOfRangeFallBackToTheDefault) {
    struct Row {
        const wchar_t* key;
        std::int32_t stored;
        std::uint32_t loaded;
    };
    constexpr Row rows[] = {
        {L"log_level", 4, 4},
        {L"log_level", 5, 0},
        {L"log_level", 9, 0},
        {L"log_level", -1, 0},
        {L"default_check_in_type", 0, 0},
        {L"default_check_in_type", 2, 2},
        {L"default_check_in_type", 5, 1},
        {L"default_check_in_type", -3, 1},
    };
    for (const Row& row : rows) {
        Block(L"PreferencesV4")[L"version"].SetInt(4);
        Block(L"PreferencesV4")[row.key].SetInt(row.stored);
        const Preferences loaded = Load();
        const bool is_level = std::wstring(row.key) == L"log_level";
        EXPECT_EQ(is_level ? loaded.log_level : loaded.default_check_in_type, row.loaded) << row.stored;
    }
}

TEST_F(PreferencesTest, AFailingStoreKeepsWhatIsInMemoryAndIsLogged) {
    const ComPtr<KOV::IKOV_Inst> real_host = module.plugin->m_kov_inst;
    module.plugin->m_kov_inst = MakeObject<RecordingHost>();
    PreferencesManager manager(module.plugin);
    manager.m_preferences.on_after_save = 8;
    LogRecorder log(LogLevel::error);
    manager.Load();
    manager.Save();
    module.plugin->m_kov_inst = real_host;
    EXPECT_EQ(manager.m_preferences.on_after_save, 8u);
    const std::vector<LogLine> lines = log.Lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].context, "PreferencesManager::Load");
    EXPECT_EQ(lines[1].context, "PreferencesManager::Save");
    const std::wstring head =
        L"Expression: 'm_plugin->m_kov_inst->GetPluginSettings(m_plugin, VARIANT_TRUE, &settings)'='HRESULT 0x80004001";
    for (const LogLine& line : lines) {
        EXPECT_TRUE(line.message.starts_with(head)) << line;
        EXPECT_TRUE(line.message.ends_with(L"' caused returning 'void(0)'")) << line;
    }
}

} // namespace
