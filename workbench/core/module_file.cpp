#include "workbench/core/module_file.h"

#include <cstring>
#include <fstream>

#include <elf.h>
#include <link.h>

#include "platform/errors.h"
#include "workbench/core/errors.h"

namespace {

constexpr DWORD BadExecutable = 193;

template <class Structure>
bool ReadAt(std::ifstream& file, std::uint64_t offset, Structure& structure) {
    file.seekg(static_cast<std::streamoff>(offset));
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&structure), sizeof(structure)));
}

bool HoldsAllSegments(std::ifstream& file, std::uint64_t file_size, const ElfW(Ehdr) & header) {
    for (std::uint64_t i = 0; i < header.e_phnum; ++i) {
        ElfW(Phdr) segment{};
        if (!ReadAt(file, header.e_phoff + i * sizeof(segment), segment)) {
            return false;
        }
        if (segment.p_type == PT_LOAD && (segment.p_offset > file_size || segment.p_filesz > file_size - segment.p_offset)) {
            return false;
        }
    }
    return true;
}

} // namespace

void CheckModuleIsWhole(const std::filesystem::path& path) {
    std::error_code error;
    const std::uint64_t file_size = std::filesystem::file_size(path, error);
    std::ifstream file(path, std::ios::binary);
    ElfW(Ehdr) header{};
    if (error || !ReadAt(file, 0, header) || std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0) {
        return;
    }
    if (header.e_phentsize != sizeof(ElfW(Phdr)) || !HoldsAllSegments(file, file_size, header)) {
        throw HostException(HRESULT_FROM_WIN32(BadExecutable),
                            "The module can't be loaded: '" + path.string() + "' is cut short");
    }
}
