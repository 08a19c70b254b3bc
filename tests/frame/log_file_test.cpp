#include "frame/diagnostics/log_file.h"

#include <chrono>
#include <fstream>
#include <thread>
#include <vector>

#include <sys/stat.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/frame/log_recorder.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

void MakeOldFile(const fs::path& path, int days) {
    std::ofstream(path) << "x";
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(24 * days));
}

} // namespace

TEST(LogFile, LinesHaveTheWholePrefixAndTheFileBeginsWithTheBuildTime) {
    const LogRecorder recorder;
    WriteLog(3, "FileSystem::BindFlush-->", L"");
    WriteLog(1, "X::Y", L"\x1F4C4 \xD800 end");
    static const std::wregex whole(LR"(^[A-Z][a-z]{2} [ 1-3]\d \d{4} \d\d:\d\d:\d\d\n)"
                                   LR"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\|[ 0-9a-f]{4,}\|3\|FileSystem::BindFlush--> \n)"
                                   LR"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\.\d{3}\|[ 0-9a-f]{4,}\|1\|X::Y )"
                                   L"\x1F4C4 \xFFFD end\n$");
    EXPECT_TRUE(std::regex_match(recorder.Text(), whole));
}

TEST(LogFile, NameHoldsTheTimeAndBelongsToTheUserAlone) {
    const LogRecorder recorder;
    WriteLog(1, "X::Y", L"");
    const std::wstring path = CurrentLogPath();
    EXPECT_TRUE(std::regex_match(path.substr(g_log_folder.size()),
                                 std::wregex(LR"(\\KOVD-SP_\d{4}-\d\d-\d\d_\d\d\.\d\d\.\d\d\.\d{3}\.log)")));
    struct stat folder = {};
    struct stat file = {};
    ASSERT_EQ(stat(recorder.Folder().c_str(), &folder), 0);
    ASSERT_EQ(stat(fs::directory_iterator(recorder.Folder())->path().c_str(), &file), 0);
    EXPECT_EQ(folder.st_mode & 0777, 0700u);
    EXPECT_EQ(file.st_mode & 0777, 0600u);
}

TEST(LogFile, OnlyALineOfAnEnabledLevelOpensTheFile) {
    const LogRecorder recorder(LogLevel::warning);
    WriteLog(0, "X::Y", L"never");
    WriteLog(3, "X::Y", L"too verbose");
    EXPECT_FALSE(fs::exists(recorder.Folder()));
    EXPECT_EQ(CurrentLogPath(), L"");
    WriteLog(1, "X::Y", L"first");
    WriteLog(3, "X::Y", L"too verbose still");
    EXPECT_THAT(recorder.Lines(), ElementsAre(LogLine{1, "X::Y", L"first"}));
}

TEST(LogFile, WithoutAFolderOrWithAnImpossibleOneLinesAreLostInSilence) {
    const LogRecorder recorder;
    const std::wstring folder = g_log_folder;
    g_log_folder.clear();
    WriteLog(1, "X::Y", L"lost");
    RemoveOldLogFiles(0);
    EXPECT_EQ(CurrentLogPath(), L"");

    std::ofstream(recorder.Folder()) << "a file stands where the folder should be";
    g_log_folder = folder;
    WriteLog(1, "X::Y", L"lost");
    EXPECT_EQ(CurrentLogPath(), L"");
    fs::remove(recorder.Folder());
    WriteLog(1, "X::Y", L"each line tries again");
    EXPECT_THAT(recorder.Messages(1), ElementsAre(L"each line tries again"));
}

TEST(LogFile, CleanUpRemovesOldLogsAndNothingElse) {
    const LogRecorder recorder(LogLevel::none);
    const fs::path folder = recorder.Folder();
    fs::create_directories(folder / "KOVD-SP_2020-01-01_00.00.00.002.log");
    MakeOldFile(folder / "KOVD-SP_2020-01-01_00.00.00.000.log", 9);
    MakeOldFile(folder / "KOVD-SP_2020-01-01_00.00.00.001.log", 3);
    MakeOldFile(folder / "KOVD-SP_2020-01-01_00.00.00.0000.log", 9);
    MakeOldFile(folder / "notes.txt", 9);

    RemoveOldLogFiles(0xFFFFFFFF);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 5);
    RemoveOldLogFiles(4);
    EXPECT_FALSE(fs::exists(folder / "KOVD-SP_2020-01-01_00.00.00.000.log"));
    EXPECT_TRUE(fs::exists(folder / "KOVD-SP_2020-01-01_00.00.00.001.log"));
    RemoveOldLogFiles(0);
    EXPECT_FALSE(fs::exists(folder / "KOVD-SP_2020-01-01_00.00.00.001.log"));
    EXPECT_TRUE(fs::exists(folder / "KOVD-SP_2020-01-01_00.00.00.002.log"));
    EXPECT_TRUE(fs::exists(folder / "KOVD-SP_2020-01-01_00.00.00.0000.log"));
    EXPECT_TRUE(fs::exists(folder / "notes.txt"));
}

TEST(LogFile, CleanUpRemovesAnEmptyFolderAndKeepsAnOpenLog) {
    const LogRecorder recorder;
    WriteLog(1, "X::Y", L"open");
    RemoveOldLogFiles(0);
    EXPECT_THAT(recorder.Messages(1), ElementsAre(L"open"));
    CloseLog();
    EXPECT_EQ(CurrentLogPath(), L"");
    RemoveOldLogFiles(0);
    EXPECT_FALSE(fs::exists(recorder.Folder()));
}

TEST(LogFile, ChangedPreferencesTakeEffectAtOnce) {
    const LogRecorder recorder(LogLevel::none);
    ApplyLogPreferences(LogLevel::information, 7);
    WriteLog(3, "X::Y", L"on");
    EXPECT_THAT(recorder.Messages(3), ElementsAre(L"on"));
    MakeOldFile(recorder.Folder() / "KOVD-SP_2020-01-01_00.00.00.000.log", 8);
    ApplyLogPreferences(LogLevel::none, 7);
    WriteLog(1, "X::Y", L"off");
    EXPECT_EQ(CurrentLogPath(), L"");
    EXPECT_EQ(std::distance(fs::directory_iterator(recorder.Folder()), {}), 1);
}

TEST(LogFile, LinesOfManyThreadsStayWhole) {
    const LogRecorder recorder;
    constexpr int count = 200;
    const std::wstring message(500, L'm');
    WriteLog(1, "X::Y", L"opens");
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int line = 0; line < count; ++line) {
                WriteLog(2, "X::Y", message);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(recorder.Messages(2), std::vector<std::wstring>(4 * count, message));
}

TEST(LogFile, ClosingWhileOthersWriteLosesNoHandle) {
    const LogRecorder recorder;
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([] {
            for (int line = 0; line < 100; ++line) {
                WriteLog(1, "X::Y", L"line");
                if (line % 10 == 0) {
                    CloseLog();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    CloseLog();
    // Every file is closed again, or the clean-up couldn't lock it.
    RemoveOldLogFiles(0);
    EXPECT_FALSE(fs::exists(recorder.Folder()));
}
