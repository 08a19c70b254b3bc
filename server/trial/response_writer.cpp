#include "server/trial/response_writer.h"

#include "server/wire/http_text.h"

#include <algorithm>
#include <ctime>

namespace trial {
namespace {

std::string HeadText(const Response& response, std::string_view framing, bool close) {
    std::string head = "HTTP/1.1 " + std::to_string(response.status) + " ";
    head.append(ReasonOf(response.status)).append("\r\n");
    head.append("Date: ").append(HttpDate(std::time(nullptr))).append("\r\nServer: kov-server\r\n");
    for (const Header& header : response.headers)
        head.append(header.name).append(": ").append(header.value).append("\r\n");
    head.append(framing);
    if (close)
        head.append("Connection: close\r\n");
    return head.append("\r\n");
}

std::string LengthLine(std::uint64_t length) { return "Content-Length: " + std::to_string(length) + "\r\n"; }

std::string Collect(const PieceMaker& maker) {
    std::string all;
    while (maker(all)) {
    }
    return all;
}

// Noise that is neither XML nor JSON nor UTF-8, and the same each time.
std::string Garbage() {
    std::string noise = "<garbage & \xFF\xFE {";
    for (unsigned i = 0; i < 512; ++i)
        noise.push_back(static_cast<char>(i * 167 + 13));
    return noise;
}

void SendPaced(Wire& wire, std::string_view bytes, Pacer& pacer) {
    while (!bytes.empty()) {
        const std::string_view step = bytes.substr(0, pacer.Step());
        wire.Write(step);
        pacer.Spend(step.size());
        bytes.remove_prefix(step.size());
    }
}

void SendFile(Wire& wire, const FileBody& body, Pacer& pacer) {
    if (pacer.IsUnlimited()) {
        wire.WriteFile(body.file->Get(), body.offset, body.length);
        return;
    }
    for (std::uint64_t sent = 0; sent < body.length;) {
        const std::uint64_t step = std::min<std::uint64_t>(pacer.Step(), body.length - sent);
        wire.WriteFile(body.file->Get(), body.offset + sent, step);
        pacer.Spend(static_cast<std::size_t>(step));
        sent += step;
    }
}

void SendChunked(Wire& wire, const std::string& head, const PieceMaker& maker, Pacer& pacer) {
    std::string pending = head;
    for (bool more = true; more;) {
        std::string piece;
        more = maker(piece);
        if (!piece.empty()) {
            char size[32];
            std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
            pending.append(size).append(piece).append("\r\n");
        }
        if (!more)
            pending.append("0\r\n\r\n");
        SendPaced(wire, pending, pacer);
        pending.clear();
    }
}

void SendDamaged(Wire& wire, const Response& response, Damage damage, bool head_only, Pacer& pacer) {
    const auto* text = std::get_if<std::string>(&response.body);
    const auto* file = std::get_if<FileBody>(&response.body);
    // An answer without a body promises one byte, so that its end is missed too.
    const std::uint64_t length = std::max<std::uint64_t>(1, text ? text->size() : file->length);
    wire.Write(HeadText(response, LengthLine(length), true));
    if (damage == Damage::truncate && !head_only) {
        if (text)
            SendPaced(wire, std::string_view(*text).substr(0, length / 2), pacer);
        else
            SendFile(wire, {file->file, file->offset, length / 2}, pacer);
    }
    throw WireClosed("ended by a fault");
}

} // namespace

void SendResponse(Wire& wire, Response response, const SendOptions& options, Pacer& pacer) {
    const bool has_no_body = response.status == 204 || response.status == 304;
    if (options.damage == Damage::garbage && !has_no_body)
        response.body = Garbage();
    const auto* maker = std::get_if<PieceMaker>(&response.body);
    if (maker && (!options.chunked_allowed || options.head_only || options.damage != Damage::none)) {
        response.body = Collect(*maker);
        maker = nullptr;
    }
    if (options.damage == Damage::truncate || options.damage == Damage::close_after_headers)
        SendDamaged(wire, response, options.damage, options.head_only, pacer);
    if (maker) {
        SendChunked(wire, HeadText(response, "Transfer-Encoding: chunked\r\n", options.close), *maker, pacer);
    } else if (const auto* file = std::get_if<FileBody>(&response.body)) {
        wire.Write(HeadText(response, LengthLine(file->length), options.close));
        if (!options.head_only)
            SendFile(wire, *file, pacer);
    } else {
        const std::string& text = std::get<std::string>(response.body);
        std::string all = HeadText(response, has_no_body ? std::string() : LengthLine(text.size()), options.close);
        if (!options.head_only && !has_no_body)
            all.append(text);
        SendPaced(wire, all, pacer);
    }
}

} // namespace trial
