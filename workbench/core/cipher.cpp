#include "workbench/core/cipher.h"

#include <cerrno>
#include <fcntl.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/errors.h"
#include "workbench/core/state_folder.h"

namespace {

constexpr std::wstring_view Mark = L"kov1:";
constexpr int Variant64 = sodium_base64_VARIANT_ORIGINAL_NO_PADDING;

[[noreturn]] void ThrowUnreadable() {
    throw HostException(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), "A secret can't be read with the key of this state folder");
}

} // namespace

/// Wiped when it ends.
struct Cipher::Key {
    ~Key() { sodium_memzero(bytes, sizeof(bytes)); }

    /// False when there is no such file yet.
    bool Read(const std::filesystem::path& file) {
        if (struct stat facts{}; lstat(file.c_str(), &facts) != 0 && errno == ENOENT) {
            return false;
        }
        const FileDescriptor opened = OpenPrivateFile(file, O_RDONLY);
        struct stat facts {};
        if (fstat(opened.Get(), &facts) != 0 || (facts.st_mode & 077) != 0) {
            throw HostException(E_ACCESSDENIED, "The key file '" + file.string() + "' is open to others");
        }
        if (facts.st_size != sizeof(bytes) || read(opened.Get(), bytes, sizeof(bytes)) != sizeof(bytes)) {
            throw HostException(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), "The key file '" + file.string() + "' is broken");
        }
        return true;
    }

    /// Whole or not at all, and never over one that another program made meanwhile.
    void Make(const std::filesystem::path& file) {
        crypto_secretbox_keygen(bytes);
        std::string draft = file.string() + ".XXXXXX";
        const FileDescriptor made(mkostemp(draft.data(), O_CLOEXEC));
        if (!made.IsOpen()) {
            ThrowErrno("Can't make the key file", file, errno);
        }
        const bool is_written = write(made.Get(), bytes, sizeof(bytes)) == sizeof(bytes) && fsync(made.Get()) == 0;
        const bool is_linked = is_written && (link(draft.c_str(), file.c_str()) == 0 || errno == EEXIST);
        const int error = errno;
        unlink(draft.c_str());
        if (!is_linked) {
            ThrowErrno("Can't make the key file", file, error);
        }
    }

    unsigned char bytes[crypto_secretbox_KEYBYTES] = {};
};

Cipher::Cipher(const std::filesystem::path& key_file) : m_key(std::make_unique<Key>()) {
    if (sodium_init() < 0) {
        throw HostException(E_FAIL, "The encryption library can't be used");
    }
    if (!m_key->Read(key_file)) {
        m_key->Make(key_file);
        if (!m_key->Read(key_file)) {
            throw HostException(E_FAIL, "The key file '" + key_file.string() + "' vanished");
        }
    }
}

Cipher::~Cipher() = default;

std::wstring Cipher::Encrypt(std::wstring_view plain) const {
    std::string text = Utf8FromWide(plain);
    std::vector<unsigned char> sealed(crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES + text.size());
    randombytes_buf(sealed.data(), crypto_secretbox_NONCEBYTES);
    crypto_secretbox_easy(sealed.data() + crypto_secretbox_NONCEBYTES, reinterpret_cast<const unsigned char*>(text.data()),
                          text.size(), sealed.data(), m_key->bytes);
    sodium_memzero(text.data(), text.size());
    std::string encoded(sodium_base64_encoded_len(sealed.size(), Variant64), '\0');
    sodium_bin2base64(encoded.data(), encoded.size(), sealed.data(), sealed.size(), Variant64);
    encoded.pop_back();
    return std::wstring(Mark) + std::wstring(encoded.begin(), encoded.end());
}

std::wstring Cipher::Decrypt(std::wstring_view enciphered) const {
    if (!enciphered.starts_with(Mark)) {
        throw HostException(E_INVALIDARG, "The text isn't an enciphered one");
    }
    enciphered.remove_prefix(Mark.size());
    std::string encoded;
    for (const wchar_t c : enciphered) {
        if (c > 0x7F) {
            ThrowUnreadable();
        }
        encoded.push_back(static_cast<char>(c));
    }
    std::vector<unsigned char> sealed(encoded.size() + 1);
    std::size_t length = 0;
    if (sodium_base642bin(sealed.data(), sealed.size(), encoded.data(), encoded.size(), nullptr, &length, nullptr, Variant64) !=
            0 ||
        length < crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES) {
        ThrowUnreadable();
    }
    std::string text(length - crypto_secretbox_NONCEBYTES - crypto_secretbox_MACBYTES, '\0');
    if (crypto_secretbox_open_easy(reinterpret_cast<unsigned char*>(text.data()), sealed.data() + crypto_secretbox_NONCEBYTES,
                                   length - crypto_secretbox_NONCEBYTES, sealed.data(), m_key->bytes) != 0) {
        ThrowUnreadable();
    }
    std::wstring plain = WideFromUtf8(text);
    sodium_memzero(text.data(), text.size());
    return plain;
}
