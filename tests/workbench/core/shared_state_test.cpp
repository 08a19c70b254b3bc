// Several programs on one state folder, and what a program leaves that is killed.

#include <csignal>
#include <fstream>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "fresh_folder.h"
#include "scripted_callbacks.h"
#include "workbench/core/cab.h"
#include "workbench/core/cache_entry.h"
#include "workbench/core/cipher.h"

namespace {

/// Runs `body` in a process of its own, which ends by its result or by a signal; gives the status of `waitpid`.
int RunProcess(const std::function<bool()>& body) {
    const pid_t child = fork();
    if (child == 0) {
        bool is_good = false;
        try {
            is_good = body();
        } catch (const std::exception& exception) {
            fprintf(stderr, "%s\n", exception.what());
        }
        _exit(is_good ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return status;
}

ComPtr<KOV::IAUX_Cab> OpenCounters(const std::shared_ptr<Store>& store) {
    constexpr std::string_view schema = "<CabTemplate><ItemSet id='T'><Item id='List' type='Array' itemSet='L'/></ItemSet>"
                                        "<ItemSet id='L'><Item type='Int'/></ItemSet>"
                                        "<Root id='Root' type='Dictionary' itemSet='T'/></CabTemplate>";
    auto cab = MakeCab(MakeStoredCabStorage(store), *FindStoredCab(*store, L"counters", true));
    EXPECT_EQ(cab->SetTemplate2(schema.data(), static_cast<ULONG>(schema.size()), L"Root"), S_OK);
    return cab;
}

ComPtr<KOV::IAUX_CabItem> ListOf(KOV::IAUX_Cab* cab) {
    ComPtr<KOV::IAUX_CabItem> list;
    const Variant key(std::wstring_view(L"List"));
    EXPECT_EQ(cab->GetItem(&key, &list), S_OK);
    return list;
}

TEST(SharedState, TwoProgramsWriteWithoutLosingAnything) {
    const FreshFolder folder;
    const auto write = [&](LONG from) {
        const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
        const Cipher cipher(folder.Path() / "key");
        const auto list = ListOf(OpenCounters(store));
        for (LONG i = 0; i < 100; ++i) {
            ComPtr<KOV::IAUX_CabItem> item;
            if (FAILED(list->AddNew(&item)) || FAILED(item->put_Int(from + i))) {
                return false;
            }
        }
        return true;
    };
    std::vector<pid_t> children;
    for (const LONG from : {1000, 2000, 3000}) {
        const pid_t child = fork();
        if (child == 0) {
            _exit(write(from) ? 0 : 1);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
    ULONG count = 0;
    EXPECT_EQ(ListOf(OpenCounters(store))->get_Count(&count), S_OK);
    EXPECT_EQ(count, 300u);
    Store::Query query(*store, "SELECT count(DISTINCT value) FROM cab_node WHERE type=2");
    query.Step();
    EXPECT_EQ(query.Integer(0), 300);
}

TEST(SharedState, AUnitOfWritesIsThereWholeOrNotAtAllAfterAKill) {
    const FreshFolder folder;
    const int status = RunProcess([&] {
        const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
        const auto list = ListOf(OpenCounters(store));
        ComPtr<KOV::IAUX_CabItem> item;
        list->AddNew(&item);
        Store::Transaction unit(*store);
        list->AddNew(&item);
        return kill(getpid(), SIGKILL) == 0;
    });
    EXPECT_TRUE(WIFSIGNALED(status));
    const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
    ULONG count = 0;
    EXPECT_EQ(ListOf(OpenCounters(store))->get_Count(&count), S_OK);
    EXPECT_EQ(count, 1u);
}

TEST(SharedState, APartThatFailedUndoesTheWhole) {
    const FreshFolder folder;
    const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
    EXPECT_THROW(
        {
            Store::Transaction outer(*store);
            AddStoredCab(*store);
            { const Store::Transaction part_without_commit(*store); }
            outer.Commit();
        },
        HostException);
    Store::Query query(*store, "SELECT count(*) FROM cab_node");
    query.Step();
    EXPECT_EQ(query.Integer(0), 0);
}

/// A program that changes a document and is killed when its upload comes to a certain call.
int RunKilledSave(const std::filesystem::path& folder, const std::string& last_call) {
    return RunProcess([&] {
        const auto cache = std::make_shared<CacheFolder>(folder, std::make_shared<Store>(folder / "store.sqlite"));
        const auto callbacks = MakeObject<ScriptedCallbacks>();
        callbacks->document = "0123456789";
        callbacks->on_call = [&](const std::string& call) {
            if (call == last_call) {
                kill(getpid(), SIGKILL);
            }
        };
        CacheEntry entry(cache, cache->MakeCopy(L"a.pdf"), {L"http://s/a.pdf", callbacks, Stamp{7, 10}, 10, {}});
        entry.Write(2, "changed", 7, nullptr, nullptr, nullptr);
        if (last_call.empty()) {
            kill(getpid(), SIGKILL);
        }
        entry.Flush(nullptr, nullptr);
        return false;
    });
}

TEST(SharedState, AKillInTheMiddleOfASaveLosesNothing) {
    for (const std::string last_call : {"", "BeginWrite", "Write", "EndWrite"}) {
        SCOPED_TRACE("killed at '" + last_call + "'");
        const FreshFolder folder;
        ASSERT_TRUE(WIFSIGNALED(RunKilledSave(folder.Path(), last_call)));
        const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
        const auto cache = std::make_shared<CacheFolder>(folder.Path(), store);
        const auto left = UnsavedCopies(cache).Find(L"http://S/A.pdf");
        ASSERT_TRUE(left);
        EXPECT_EQ(left->stamp, (Stamp{7, 10}));
        EXPECT_EQ(left->is_complete, !last_call.empty());
        std::ifstream file(left->path);
        EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "01changed9");

        std::int64_t mark = 0;
        const auto adopted = cache->TakeFile(left->path, false, left->url, L"a.pdf", left->stamp, mark);
        EXPECT_EQ(adopted->Size(), 10);
        EXPECT_FALSE(std::filesystem::exists(left->path));
    }
}

TEST(SharedState, AFullDiskRefusesTheWriteAndTheSaveUntilTheBytesAreThere) {
    const FreshFolder folder;
    EXPECT_EQ(RunProcess([&] {
                  const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
                  const auto cache = std::make_shared<CacheFolder>(folder.Path(), store);
                  const auto callbacks = MakeObject<ScriptedCallbacks>();
                  callbacks->document = "server's";
                  CacheEntry entry(cache, cache->MakeCopy(L"a.pdf"), {L"http://s/a.pdf", callbacks, Stamp{7, 8}, 8, {}});
                  const std::string bytes(std::size_t{2} << 20, 'x');
                  const auto write = [&] {
                      return entry.Write(0, bytes.data(), static_cast<ULONG>(bytes.size()), nullptr, nullptr, nullptr);
                  };
                  std::signal(SIGXFSZ, SIG_IGN);
                  rlimit limit{1 << 20, RLIM_INFINITY};
                  setrlimit(RLIMIT_FSIZE, &limit);
                  const auto details = MakeObject<StringObject>();
                  const bool is_refused = FAILED(write()) && FAILED(entry.LocalError()) &&
                                          FAILED(entry.Flush(details, nullptr)) && !TextOf(details).empty() &&
                                          callbacks->document == "server's";
                  limit.rlim_cur = RLIM_INFINITY;
                  setrlimit(RLIMIT_FSIZE, &limit);
                  return is_refused && write() == S_OK && entry.Flush(nullptr, nullptr) == S_OK && callbacks->document == bytes;
              }),
              0);
}

TEST(SharedState, CopiesOfARunningProgramAreLeftAloneAndThoseOfAnEndedOneRemoved) {
    const FreshFolder folder;
    const auto store = std::make_shared<Store>(folder.Path() / "store.sqlite");
    const auto running = std::make_shared<CacheFolder>(folder.Path(), store);
    const auto clean = running->MakeCopy(L"clean.pdf");
    const auto unsaved = running->MakeCopy(L"unsaved.pdf");
    running->MarkUnsaved(L"http://s/unsaved.pdf", *unsaved, std::nullopt);
    unsaved->KeepFile(true);

    const auto look_around = [&](bool is_other_running) {
        const auto cache = std::make_shared<CacheFolder>(folder.Path(), std::make_shared<Store>(folder.Path() / "store.sqlite"));
        return std::filesystem::exists(clean->Path()) == is_other_running && std::filesystem::exists(unsaved->Path()) &&
               cache->ListUnsaved().size() == (is_other_running ? 0u : 1u);
    };
    EXPECT_EQ(RunProcess([&] { return look_around(true); }), 0);

    const auto abandoned = folder.Path() / "cache" / "ended";
    std::filesystem::create_directory(abandoned);
    std::ofstream(abandoned / "1-left.pdf") << "left";
    EXPECT_EQ(RunProcess([&] { return look_around(true) && !std::filesystem::exists(abandoned); }), 0);
}

} // namespace
