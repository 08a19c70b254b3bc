#include "afs/file_stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/memory.h"

namespace {

/// An open file over a text; `read_result` is what a read that ends early answers.
class TextFile final : public cCoClassUnknownT<KOV::IAFS_File> {
public:
    std::string text;
    HRESULT read_result = S_OK;
    ULONG largest_read = 0;
    LONGLONG pos = 0;
    DWORD last_origin = 99;
    int flushes = 0;

    HRESULT Read(void* data, ULONG size, ULONG* out_size_read, KOV::IString* details, KOV::IKOV_Flag* flag) override {
        EXPECT_EQ(details, nullptr);
        EXPECT_EQ(flag, nullptr);
        largest_read = std::max(largest_read, size);
        const auto count = std::min<std::size_t>(size, text.size() - static_cast<std::size_t>(pos));
        std::memcpy(data, text.data() + pos, count);
        pos += static_cast<LONGLONG>(count);
        *out_size_read = static_cast<ULONG>(count);
        return count < size ? read_result : S_OK;
    }
    HRESULT Write(const void* data, ULONG size, ULONG* out_size_written, KOV::IString*, KOV::IKOV_Flag*) override {
        text.replace(static_cast<std::size_t>(pos), size, static_cast<const char*>(data), size);
        pos += size;
        *out_size_written = size;
        return S_OK;
    }
    HRESULT SetPos(LONGLONG offset, DWORD origin, LONGLONG* out_pos) override {
        last_origin = origin;
        pos = origin == 2 ? static_cast<LONGLONG>(text.size()) + offset : origin == 1 ? pos + offset : offset;
        *out_pos = pos;
        return S_OK;
    }
    HRESULT SetSize(LONGLONG size, KOV::IString*, KOV::IKOV_Flag*) override {
        text.resize(static_cast<std::size_t>(size));
        return S_OK;
    }
    HRESULT GetSize(LONGLONG* out_size, KOV::IString*, KOV::IKOV_Flag*) override {
        *out_size = static_cast<LONGLONG>(text.size());
        return S_OK;
    }
    HRESULT Flush(KOV::IString*, KOV::IKOV_Flag*) override {
        ++flushes;
        return S_OK;
    }
    HRESULT Clone(KOV::IAFS_File** out_clone) override {
        const ComPtr<TextFile> clone = MakeObject<TextFile>();
        clone->text = text;
        ComPtr<KOV::IAFS_File>(clone).CopyTo(out_clone);
        return S_OK;
    }
    HRESULT get_Name(KOV::IAFS_Name**) override { return E_NOTIMPL; }
    HRESULT get_OpenFlags(DWORD*) override { return E_NOTIMPL; }
    HRESULT get_IoMode(DWORD*) override { return E_NOTIMPL; }
    HRESULT IsCloneOf(KOV::IAFS_File*, VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT GetPos(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT Reopen(DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT GetStream(IStream**) override { return E_NOTIMPL; }
    HRESULT Close(DWORD, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
    HRESULT get_Prop(LPCWSTR, VARIANT*) override { return E_NOTIMPL; }
    HRESULT put_Prop(LPCWSTR, const VARIANT*) override { return E_NOTIMPL; }
    HRESULT Exec(LPCWSTR, const VARIANT*, VARIANT*, KOV::IString*, KOV::IKOV_Flag*) override { return E_NOTIMPL; }
};

class FileStream : public testing::Test {
protected:
    const ComPtr<TextFile> m_file = MakeObject<TextFile>();
    const ComPtr<fsFileStreamBase> m_stream = MakeObject<fsFileStreamBase>(m_file);

    std::string ReadText(ULONG size) {
        std::string text(size, 0);
        ULONG count = 0;
        m_stream->Read(text.data(), size, &count);
        return text.substr(0, count);
    }
};

TEST_F(FileStream, ShortReadIsAnEndAndFullReadKeepsTheFilesResult) {
    const struct {
        HRESULT file_result;
        ULONG size;
        HRESULT result;
    } rows[] = {
        {S_OK, 3, S_OK},
        {S_OK, 4, S_FALSE},
        {S_FALSE, 4, S_FALSE},
        {MakeHResult(0x8007001B), 4, S_FALSE},
        {MakeHResult(0x8007139F), 4, MakeHResult(0x8007139F)},
        // The end of the server's body is another code than the one that counts as an end here.
        {MakeHResult(0x80070026), 4, MakeHResult(0x80070026)},
        {E_FAIL, 3, S_OK},
    };
    for (const auto& row : rows) {
        m_file->text = "abc";
        m_file->pos = 0;
        m_file->read_result = row.file_result;
        char data[8];
        ULONG count = 99;
        EXPECT_EQ(m_stream->Read(data, row.size, &count), row.result) << "row " << &row - rows;
        EXPECT_EQ(count, 3u);
        m_file->pos = 0;
        EXPECT_EQ(m_stream->Read(data, row.size, nullptr), row.result);
    }
}

TEST_F(FileStream, SeeksWritesSizesAndSavesThroughTheFile) {
    m_file->text = "0123456789";
    ULARGE_INTEGER position{};
    const struct {
        DWORD origin;
        DWORD file_origin;
    } rows[] = {{STREAM_SEEK_SET, 0}, {STREAM_SEEK_CUR, 1}, {STREAM_SEEK_END, 2}, {7, 0}};
    for (const auto& row : rows) {
        EXPECT_EQ(m_stream->Seek({.QuadPart = 0}, row.origin, &position), S_OK);
        EXPECT_EQ(m_file->last_origin, row.file_origin);
    }
    EXPECT_EQ(m_stream->Seek({.QuadPart = -2}, STREAM_SEEK_END, &position), S_OK);
    EXPECT_EQ(position.QuadPart, 8u);
    EXPECT_EQ(m_stream->Seek({.QuadPart = -1}, STREAM_SEEK_CUR, nullptr), S_OK);
    ULONG written = 0;
    EXPECT_EQ(m_stream->Write("xy", 2, &written), S_OK);
    EXPECT_EQ(written, 2u);
    EXPECT_EQ(m_stream->SetSize({.QuadPart = 9}), S_OK);
    EXPECT_EQ(m_file->text, "0123456xy");
    EXPECT_EQ(m_stream->Commit(12345), S_OK);
    EXPECT_EQ(m_file->flushes, 1);
}

TEST_F(FileStream, CopiesInChunksUntilTheCountOrTheEnd) {
    std::string text(200'000, 'a');
    text += "end";
    const struct {
        ULONGLONG size;
        std::size_t copied;
    } rows[] = {{0, 0}, {1, 1}, {65'537, 65'537}, {200'003, 200'003}, {UINT64_MAX, 200'003}};
    for (const auto& row : rows) {
        m_file->text = text;
        m_file->pos = 0;
        m_file->largest_read = 0;
        const ComPtr<TextFile> target = MakeObject<TextFile>();
        const ComPtr<fsFileStreamBase> target_stream = MakeObject<fsFileStreamBase>(target);
        ULARGE_INTEGER read{.QuadPart = 99};
        ULARGE_INTEGER written{.QuadPart = 99};
        EXPECT_EQ(m_stream->CopyTo(target_stream, {.QuadPart = row.size}, &read, &written), S_OK) << row.size;
        EXPECT_TRUE(target->text == text.substr(0, row.copied)) << row.size;
        EXPECT_LE(m_file->largest_read, 65'536u);
        EXPECT_EQ(read.QuadPart, 99u);
        EXPECT_EQ(written.QuadPart, 99u);
    }
    EXPECT_EQ(m_stream->CopyTo(nullptr, {.QuadPart = 1}, nullptr, nullptr), E_POINTER);
}

TEST_F(FileStream, CopyEndsWithTheFailureOfARead) {
    m_file->text = "abc";
    m_file->read_result = MakeHResult(0x8007139F);
    const ComPtr<TextFile> target = MakeObject<TextFile>();
    const ComPtr<fsFileStreamBase> target_stream = MakeObject<fsFileStreamBase>(target);
    EXPECT_EQ(m_stream->CopyTo(target_stream, {.QuadPart = 10}, nullptr, nullptr), MakeHResult(0x8007139F));
}

TEST_F(FileStream, TellsTypeAndSizeAndNoName) {
    m_file->text = "abc";
    STATSTG stat{};
    stat.pwcsName = reinterpret_cast<LPWSTR>(this);
    EXPECT_EQ(m_stream->Stat(&stat, 0), S_OK);
    EXPECT_EQ(stat.type, 2u);
    EXPECT_EQ(stat.cbSize.QuadPart, 3u);
    EXPECT_EQ(stat.pwcsName, nullptr);
    EXPECT_EQ(m_stream->Stat(nullptr, 0), E_POINTER);
}

TEST_F(FileStream, CloneReadsFromTheStartOnItsOwn) {
    m_file->text = "abc";
    EXPECT_EQ(ReadText(2), "ab");
    ComPtr<IStream> clone;
    ASSERT_EQ(m_stream->Clone(&clone), S_OK);
    char data[3];
    ULONG count = 0;
    EXPECT_EQ(clone->Read(data, 3, &count), S_OK);
    EXPECT_EQ(std::string(data, count), "abc");
    EXPECT_EQ(ReadText(2), "c");
    EXPECT_EQ(m_stream->Clone(nullptr), E_POINTER);
    EXPECT_EQ(MakeObject<fsFileStreamBase>(nullptr)->Clone(&clone), E_FAIL);
}

TEST_F(FileStream, RefusesWhatAFileHasNot) {
    EXPECT_EQ(m_stream->Revert(), E_NOTIMPL);
    EXPECT_EQ(m_stream->LockRegion({}, {}, 0), E_NOTIMPL);
    EXPECT_EQ(m_stream->UnlockRegion({}, {}, 0), E_NOTIMPL);
}

TEST_F(FileStream, AnswersToBothStreamInterfaces) {
    EXPECT_FALSE(ComPtr<IStream>(m_stream).As<ISequentialStream>().IsNull());
    EXPECT_FALSE(ComPtr<IStream>(m_stream).As<IStream>().IsNull());
    EXPECT_TRUE(ComPtr<IStream>(m_stream).As<KOV::IAFS_File>().IsNull());
}

} // namespace
