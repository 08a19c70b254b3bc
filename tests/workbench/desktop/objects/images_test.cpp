#include <fstream>
#include <thread>

#include <QIcon>
#include <QImage>
#include <gtest/gtest.h>

#include "platform/errors.h"
#include "platform/memory.h"
#include "support/unanswered.h"
#include "workbench/desktop/objects/images.h"

namespace {

ComPtr<IStream> StreamOf(const std::string& bytes) {
    HGLOBAL block = GlobalAlloc(GMEM_MOVEABLE, bytes.size());
    memcpy(GlobalLock(block), bytes.data(), bytes.size());
    GlobalUnlock(block);
    ComPtr<IStream> stream;
    EXPECT_EQ(CreateStreamOnHGlobal(block, TRUE, &stream), S_OK);
    return stream;
}

std::string ModuleIcon(int size) {
    std::ifstream file(KOV_SOURCE_DIR "/src/resources/icon_" + std::to_string(size) + ".png", std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// Width and height in a header of a picture whose data is missing.
std::string HeaderOf(unsigned char width_high) {
    std::string header("\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR", 16);
    header += std::string("\0", 1) + static_cast<char>(width_high) + std::string("\0\x10\0\0\0\x10\x08\x06\0\0\0", 11);
    return header;
}

class ForeignImage final : public cCoClassUnknownT<KOV::IKOV_MultiSizeImage> {
    HRESULT AddPicture(KOV::IKOV_Picture*, DWORD) override { return E_NOTIMPL; }
    HRESULT Finish(ULONG*) override { return E_NOTIMPL; }
};

} // namespace

TEST(Images, AreFilledOnAnyThreadAndShownOnTheMainOne) {
    const ComPtr<KOV::IKOV_MultiSizeImage> image = MakeImage();
    std::thread([&] {
        for (const int size : {16, 24, 32, 48}) {
            ComPtr<KOV::IKOV_Picture> picture;
            ASSERT_EQ(DecodePicture(StreamOf(ModuleIcon(size)), &picture), S_OK);
            SIZE read{};
            EXPECT_EQ(picture->get_Size(&read), S_OK);
            EXPECT_EQ(read.cx, size);
            EXPECT_EQ(image->AddPicture(picture, 0), S_OK);
        }
        ULONG count = 0;
        EXPECT_EQ(image->Finish(&count), S_OK);
        EXPECT_EQ(count, 4u);
    }).join();
    EXPECT_EQ(IconOf(image).availableSizes(), QList<QSize>({{16, 16}, {24, 24}, {32, 32}, {48, 48}}));
    EXPECT_EQ(IconOf(image).availableSizes().size(), 4) << "asked again";
}

TEST(Images, AreRefusedWhenTheyAreNone) {
    struct Row {
        const char* name;
        std::string bytes;
    };
    const Row rows[] = {{"nothing", ""},
                        {"a text", "GIF89a, they say"},
                        {"a cut picture", ModuleIcon(48).substr(0, 200)},
                        {"a header alone", HeaderOf(0)},
                        {"a picture as wide as a street", HeaderOf(1)}};
    for (const Row& row : rows) {
        ComPtr<KOV::IKOV_Picture> picture;
        EXPECT_EQ(DecodePicture(StreamOf(row.bytes), &picture), HRESULT_FROM_WIN32(ERROR_INVALID_DATA)) << row.name;
        EXPECT_TRUE(picture.IsNull());
    }
    EXPECT_TRUE(IconOf(nullptr).isNull());
    EXPECT_TRUE(IconOf(MakeObject<ForeignImage>()).isNull()) << "another's image";
}
