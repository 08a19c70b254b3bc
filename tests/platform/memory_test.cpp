#include "platform/memory.h"

#include <cstring>
#include <string>

#include <gtest/gtest.h>

#include "platform/errors.h"

namespace {

HGLOBAL BlockWith(const std::string& bytes) {
    const HGLOBAL block = GlobalAlloc(34, bytes.size());
    std::memcpy(GlobalLock(block), bytes.data(), bytes.size());
    EXPECT_FALSE(GlobalUnlock(block));
    EXPECT_EQ(GetLastError(), NO_ERROR);
    return block;
}

std::string ReadAll(IStream* stream) {
    std::string all;
    char buffer[4];
    for (ULONG count = 1; count > 0;) {
        EXPECT_EQ(stream->Read(buffer, sizeof buffer, &count), S_OK);
        all.append(buffer, count);
    }
    return all;
}

HRESULT SeekTo(IStream* stream, std::int64_t offset, DWORD origin = STREAM_SEEK_SET) {
    LARGE_INTEGER target{};
    target.QuadPart = offset;
    return stream->Seek(target, origin, nullptr);
}

TEST(GlobalBlocks, AreToldFromWhatIsNone) {
    const HGLOBAL block = GlobalAlloc(34, 10);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(GlobalSize(block), 10u);
    EXPECT_EQ(GlobalLock(block), GlobalLock(block));
    EXPECT_TRUE(GlobalUnlock(block));
    EXPECT_FALSE(GlobalUnlock(block));
    EXPECT_EQ(GetLastError(), NO_ERROR);
    EXPECT_FALSE(GlobalUnlock(block));
    EXPECT_EQ(GetLastError(), 158u);
    EXPECT_EQ(GlobalFree(block), nullptr);

    int other = 0;
    for (const HGLOBAL handle : {block, static_cast<HGLOBAL>(&other)}) {
        SetLastError(0);
        EXPECT_EQ(GlobalLock(handle), nullptr);
        EXPECT_EQ(GetLastError(), ERROR_INVALID_HANDLE);
        EXPECT_EQ(GlobalFree(handle), handle);
        EXPECT_EQ(GlobalSize(handle), 0u);
        IStream* stream = nullptr;
        EXPECT_EQ(CreateStreamOnHGlobal(handle, TRUE, &stream), E_INVALIDARG);
    }
    EXPECT_EQ(GlobalAlloc(0x8000, 1), nullptr);
    EXPECT_EQ(GetLastError(), ERROR_INVALID_FLAGS);
    EXPECT_EQ(GlobalFree(nullptr), nullptr);
}

TEST(StreamOnMemory, ReadsTheBlockAndFreesItWithItsLastClone) {
    const HGLOBAL block = BlockWith("0123456789");
    ComPtr<IStream> clone;
    {
        ComPtr<IStream> stream;
        ASSERT_EQ(CreateStreamOnHGlobal(block, TRUE, &stream), S_OK);
        ASSERT_EQ(SeekTo(stream, 6), S_OK);
        ASSERT_EQ(stream->Clone(&clone), S_OK);
        EXPECT_EQ(ReadAll(stream), "6789");
    }
    EXPECT_EQ(ReadAll(clone), "6789");
    EXPECT_EQ(GlobalSize(block), 10u);
    clone.Release();
    EXPECT_EQ(GlobalSize(block), 0u);
}

TEST(StreamOnMemory, LeavesABlockThatItDoesNotOwn) {
    const HGLOBAL block = BlockWith("abc");
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(block, FALSE, &stream), S_OK);
    ASSERT_EQ(SeekTo(stream, 0, STREAM_SEEK_END), S_OK);
    ASSERT_EQ(stream->Write("def", 3, nullptr), S_OK);
    stream.Release();
    EXPECT_EQ(std::string(static_cast<char*>(GlobalLock(block)), GlobalSize(block)), "abcdef");
    EXPECT_EQ(GlobalFree(block), nullptr);
}

TEST(StreamOnMemory, SeeksOnlyToPlacesThatExist) {
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &stream), S_OK);
    ASSERT_EQ(SeekTo(stream, 3), S_OK);
    EXPECT_EQ(ReadAll(stream), "");
    ASSERT_EQ(stream->Write("x", 1, nullptr), S_OK);
    ASSERT_EQ(SeekTo(stream, 0), S_OK);
    EXPECT_EQ(ReadAll(stream), std::string("\0\0\0x", 4));
    EXPECT_TRUE(FAILED(SeekTo(stream, -5, STREAM_SEEK_CUR)));
    EXPECT_TRUE(FAILED(SeekTo(stream, INT64_MAX, STREAM_SEEK_CUR)));
    EXPECT_TRUE(FAILED(SeekTo(stream, 0, 3)));
    EXPECT_EQ(SeekTo(stream, -1, STREAM_SEEK_END), S_OK);
    EXPECT_EQ(ReadAll(stream), "x");
    ULARGE_INTEGER huge{};
    huge.QuadPart = UINT64_MAX;
    EXPECT_EQ(stream->SetSize(huge), E_OUTOFMEMORY);
}

TEST(StreamOnMemory, CopiesOntoItsOwnClone) {
    const std::string bytes(100'000, 'k');
    ComPtr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(BlockWith(bytes), TRUE, &stream), S_OK);
    ComPtr<IStream> target;
    ASSERT_EQ(stream->Clone(&target), S_OK);
    ASSERT_EQ(SeekTo(target, 0, STREAM_SEEK_END), S_OK);
    ULARGE_INTEGER size{};
    size.QuadPart = bytes.size();
    ULARGE_INTEGER written{};
    EXPECT_EQ(stream->CopyTo(target, size, nullptr, &written), S_OK);
    EXPECT_EQ(written.QuadPart, bytes.size());
    ASSERT_EQ(SeekTo(stream, 0), S_OK);
    EXPECT_EQ(ReadAll(stream), bytes + bytes);
}

} // namespace
