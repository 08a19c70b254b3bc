// PUT, MKCOL, DELETE, MOVE, COPY.

#include "server/services/services.h"
#include "server/wire/http_text.h"

#include <vector>

namespace trial {
namespace {

// A condition on the version that a client believes to replace (RFC 9110 section 13).
void CheckVersion(const Call& call) {
    const Headers& headers = call.request.headers;
    const std::string* must_be = headers.Find("If-Match");
    const std::string* must_not_be = headers.Find("If-None-Match");
    if (!must_be && !must_not_be)
        return;
    const auto entry = call.store.Find(call.request.path);
    const auto meets = [&entry](std::string_view etag) { return entry && (etag == "*" || etag == entry->etag); };
    if ((must_be && !meets(*must_be)) || (must_not_be && meets(*must_not_be)))
        throw Refusal(412, "/" + call.request.path + " is another version");
}

bool MayOverwrite(const Request& request) {
    const std::string_view overwrite = Trim(request.headers.Get("Overwrite"));
    if (overwrite.empty() || EqualNoCase(overwrite, "T"))
        return true;
    if (EqualNoCase(overwrite, "F"))
        return false;
    throw Refusal(400, "Overwrite is T or F");
}

// An obstacle that is what the request names is the status of the whole; anything inside is told item by item.
Response AnswerObstacles(const Request& request, const std::vector<Obstacle>& obstacles, const std::string& destination = {}) {
    for (const Obstacle& obstacle : obstacles) {
        if (FoldCase(obstacle.path) == FoldCase(request.path) || FoldCase(obstacle.path) == FoldCase(destination))
            throw Refusal(obstacle.status, "/" + obstacle.path + " is held by another user or locked");
    }
    return MultistatusOf(request, obstacles);
}

Response AnswerTransfer(const Call& call, Store::Transfer kind) {
    const Request& request = call.request;
    const std::string* destination = request.headers.Find("Destination");
    if (!destination)
        throw Refusal(400, "Destination is missing");
    const std::string_view depth = request.headers.Get("Depth");
    const bool is_shallow = depth == "0";
    if (!depth.empty() && !is_shallow && !EqualNoCase(depth, "infinity"))
        throw Refusal(400, "Depth is 0 or infinity");
    if (is_shallow && kind == Store::Transfer::move) {
        const auto entry = call.store.Find(request.path);
        if (entry && entry->is_folder)
            throw Refusal(400, "a folder moves with all that is in it");
    }
    const std::string place = PathOfUrl(request, *destination);
    const Store::TransferResult result =
        call.store.MoveOrCopy(kind, request.path, place, MayOverwrite(request), !is_shallow, WriterOf(call));
    if (!result.obstacles.empty())
        return AnswerObstacles(request, result.obstacles, place);
    Response response{result.replaced ? 204 : 201, {}, {}};
    if (!result.replaced)
        response.With("Location", UrlOf(request, place));
    return response;
}

} // namespace

Response AnswerPut(const Call& call) {
    const Request& request = call.request;
    if (request.path.empty())
        throw Refusal(405, "the root is a folder");
    // A part of a file put in place of the whole would lose the rest (RFC 9110 section 14.4).
    if (request.headers.Find("Content-Range"))
        throw Refusal(400, "parts of a file can't be put");
    const Writer writer = WriterOf(call);
    bool is_new = false;
    call.store.CheckWritable(request.path, writer, &is_new);
    CheckVersion(call);
    const auto upload = call.store.BeginUpload();
    std::vector<char> block(256 * 1024);
    while (const std::size_t count = request.body->Read(block.data(), block.size()))
        upload->Write({block.data(), count});
    const Entry entry = call.store.Commit(*upload, request.path, writer);
    Response response{is_new ? 201 : 204, {}, {}};
    return response.With("ETag", entry.etag);
}

Response AnswerMkcol(const Call& call) {
    const Request& request = call.request;
    if (request.path.empty())
        throw Refusal(405, "the root is there already");
    char byte;
    if (request.body->Read(&byte, 1) > 0)
        throw Refusal(415, "a folder takes no body");
    call.store.MakeFolder(request.path, WriterOf(call));
    return Response{201, {}, {}};
}

Response AnswerDelete(const Call& call) {
    const Request& request = call.request;
    const std::string_view depth = request.headers.Get("Depth");
    if (!depth.empty() && !EqualNoCase(depth, "infinity")) {
        const auto entry = call.store.Find(request.path);
        if (entry && entry->is_folder)
            throw Refusal(400, "a folder goes with all that is in it");
    }
    // A fragment names a part of the document, and no part can be removed.
    if (request.target.find('#') != std::string::npos)
        throw Refusal(400, "a target has no fragment");
    const auto obstacles = call.store.Remove(request.path, WriterOf(call));
    return obstacles.empty() ? Response{204, {}, {}} : AnswerObstacles(request, obstacles);
}

Response AnswerMove(const Call& call) { return AnswerTransfer(call, Store::Transfer::move); }

Response AnswerCopy(const Call& call) { return AnswerTransfer(call, Store::Transfer::copy); }

} // namespace trial
