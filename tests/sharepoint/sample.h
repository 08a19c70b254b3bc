#pragma once

// Replies of servers as files beside the tests, named for what is odd about them.

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include "http/byte_stream.h"

inline std::string ReadSample(const std::string& name) {
    std::ifstream file(std::string(KOV_SOURCE_DIR "/tests/sharepoint/samples/") + name, std::ios::binary);
    if (!file) {
        throw std::runtime_error("no sample " + name);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline Http::ByteStream AsBody(const std::string& text) {
    Http::ByteStream body(text.size());
    std::memcpy(body.Reserve(text.size() + 1), text.data(), text.size());
    body.Commit(text.size());
    return body;
}
