#include "bench/module_work.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fmt/format.h>
#include <pugixml.hpp>
#include <unistd.h>

#include "bench/measure.h"
#include "host/host_interfaces.h"
#include "platform/text.h"
#include "workbench/core/host.h"

namespace fs = std::filesystem;

namespace {

void Require(HRESULT result, const char* what) {
    if (FAILED(result)) {
        throw std::runtime_error(fmt::format("{} failed with 0x{:08x}", what, static_cast<std::uint32_t>(result)));
    }
}

void Print(const char* name, double value) { fmt::print("{} {}\n", name, value); }

void PrintCost(const Cost& cost) {
    Print("wall", cost.wall);
    Print("user", cost.user);
    Print("cpu", cost.Cpu());
}

/// The module in a host of its own, with a state folder that goes away with it.
class LoadedModule {
public:
    LoadedModule() {
        std::string pattern = (fs::temp_directory_path() / "kov-bench-XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        m_state = pattern;
        const fs::path module = fs::read_symlink("/proc/self/exe").parent_path() / "SharePoint.kvp";
        m_host = MakeObject<Host>(HostOptions{m_state, module, nullptr, nullptr}, m_loop);
        m_host->Load();
    }
    ~LoadedModule() {
        m_root.Release();
        m_host->Unload();
        m_host.Release();
        fs::remove_all(m_state);
    }
    LoadedModule(const LoadedModule&) = delete;
    LoadedModule& operator=(const LoadedModule&) = delete;

    KOV::IAFS_FileSys* Provider() const { return m_host->Provider(); }

    ComPtr<KOV::IAFS_Name> Bind(const std::string& url) {
        ComPtr<KOV::IAFS_BindContext> context;
        Require(m_host->CreateStdBindContext(&context), "the bind context");
        const std::wstring wide = WideFromUtf8(url);
        Require(Provider()->BindToPath(wide.c_str(), context, 0, nullptr, nullptr, &m_root), "the bind");
        ComPtr<KOV::IAFS_Name> name;
        Require(Provider()->StringToName(wide.c_str(), 0, m_root, &name), "the name");
        return name;
    }

    ComPtr<KOV::IAFS_File> Open(const std::string& url, DWORD flags) {
        ComPtr<KOV::IAFS_File> file;
        Require(Provider()->OpenFile(Bind(url), flags, nullptr, nullptr, &file), "the open");
        return file;
    }

private:
    fs::path m_state;
    MainLoop m_loop;
    ComPtr<Host> m_host;
    ComPtr<KOV::IAFS_Name> m_root;
};

std::size_t EnumerateAll(KOV::IAFS_FileSys* provider, KOV::IAFS_Name* folder) {
    ComPtr<KOV::IAFS_EnumFolder> items;
    Require(provider->EnumFolder(folder, nullptr, nullptr, &items), "the listing");
    std::size_t count = 0;
    for (;;) {
        ComPtr<KOV::IAFS_EnumFolderItem> item;
        Require(items->Next(&item), "the next item");
        if (item.IsNull()) {
            return count;
        }
        ++count;
    }
}

/// list URL
void List(const std::vector<std::string>& words) {
    LoadedModule module;
    const ComPtr<KOV::IAFS_Name> folder = module.Bind(words[1]);
    const std::uint64_t before = ResetPeakMemory();
    std::size_t count = 0;
    PrintCost(CostOf([&] { count = EnumerateAll(module.Provider(), folder); }));
    Print("items", static_cast<double>(count));
    Print("memory", static_cast<double>(PeakMemory() - before));
}

/// parse FILE
void Parse(const std::vector<std::string>& words) {
    std::ifstream file(words[1], std::ios::binary);
    const std::string body((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    PrintCost(CostOf([&] {
        pugi::xml_document document;
        if (!document.load_buffer(body.data(), body.size())) {
            throw std::runtime_error("the body is no XML");
        }
    }));
    Print("bytes", static_cast<double>(body.size()));
}

std::uint64_t ReadAll(KOV::IAFS_File* file) {
    std::vector<char> buffer(64 * 1024);
    std::uint64_t done = 0;
    for (;;) {
        ULONG count = 0;
        Require(file->Read(buffer.data(), static_cast<ULONG>(buffer.size()), &count, nullptr, nullptr), "the read");
        if (count == 0) {
            return done;
        }
        done += count;
    }
}

constexpr DWORD read_flags = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_OpenExisting;
constexpr DWORD write_flags = KOV::AFS_OpenFile_Read | KOV::AFS_OpenFile_Write | KOV::AFS_OpenFile_OpenAlways;

/// download URL
void Download(const std::vector<std::string>& words) {
    LoadedModule module;
    const ComPtr<KOV::IAFS_File> file = module.Open(words[1], read_flags);
    std::uint64_t bytes = 0;
    PrintCost(CostOf([&] { bytes = ReadAll(file); }));
    Print("bytes", static_cast<double>(bytes));
}

/// growth SMALL_URL LARGE_URL: how much more memory the large one takes.
void Growth(const std::vector<std::string>& words) {
    LoadedModule module;
    ReadAll(module.Open(words[1], read_flags));
    const std::uint64_t after_small = PeakMemory();
    ReadAll(module.Open(words[2], read_flags));
    Print("growth", static_cast<double>(PeakMemory()) - static_cast<double>(after_small));
}

/// upload URL BYTES PIECE
void Upload(const std::vector<std::string>& words) {
    LoadedModule module;
    const ComPtr<KOV::IAFS_File> file = module.Open(words[1], write_flags);
    const std::uint64_t size = std::stoull(words[2]);
    const std::vector<char> piece(std::stoul(words[3]), 'x');
    const Cost writing = CostOf([&] {
        for (std::uint64_t done = 0; done < size; done += piece.size()) {
            ULONG written = 0;
            Require(file->Write(piece.data(), static_cast<ULONG>(piece.size()), &written, nullptr, nullptr), "the write");
        }
    });
    const Cost flush = CostOf([&] { Require(file->Flush(nullptr, nullptr), "the flush"); });
    Print("write_wall", writing.wall);
    Print("write_cpu", writing.Cpu());
    Print("flush_wall", flush.wall);
    Print("flush_cpu", flush.Cpu());
}

struct Work {
    const char* name;
    std::size_t words;
    void (*run)(const std::vector<std::string>& words);
};

constexpr Work works[] = {
    {"list", 2, List}, {"parse", 2, Parse}, {"download", 2, Download}, {"growth", 3, Growth}, {"upload", 4, Upload},
};

} // namespace

int RunWork(const std::vector<std::string>& words) {
    for (const Work& work : works) {
        if (!words.empty() && words[0] == work.name && words.size() == work.words) {
            work.run(words);
            return 0;
        }
    }
    throw std::runtime_error("there is no such work");
}
