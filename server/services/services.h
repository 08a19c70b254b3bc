// The services, one source file each. All may throw Refusal.
#pragma once

#include "server/services/router.h"

#include <optional>
#include <string_view>

namespace trial {

// WebDAV (RFC 4918), on the path of the request.
Response AnswerOptions(const Call& call);
Response AnswerGet(const Call& call); ///< HEAD too.
Response AnswerPropfind(const Call& call);
Response AnswerProppatch(const Call& call);
Response AnswerPut(const Call& call);
Response AnswerMkcol(const Call& call);
Response AnswerDelete(const Call& call);
Response AnswerMove(const Call& call);
Response AnswerCopy(const Call& call);
Response AnswerLock(const Call& call);
Response AnswerUnlock(const Call& call);

// What stands below a web.
Response AnswerSoap(const Call& call, std::string_view service);
Response AnswerAuthorDll(const Call& call);
Response AnswerRest(const Call& call, std::string_view resource);

/// The pages on which a browser signs in and out; nothing for other paths.
std::optional<Response> AnswerSignInPage(const Request& request, Accounts& accounts);

/// The writer that the request speaks for, with the lock tokens of its `If` line. Refusal 412 when none of its conditions
/// holds, 400 when the line can't be read (RFC 4918 section 10.4).
Writer WriterOf(const Call& call);
/// The path on this server that a URL of a header or a body names. Refusal 502 for another server, 400 for what is no URL.
std::string PathOfUrl(const Request& request, std::string_view url);
/// The path of the file that a link made for sharing leads to: ":b:/r/sites/x/doc.pdf" is the short form of one to
/// "sites/x/doc.pdf", the letter says of what kind the file is. Other paths come back as they are.
std::string PathBehindLink(const std::string& path);
/// Absolute, escaped once, and always the same spelling for one path.
std::string UrlOf(const Request& request, std::string_view path);
/// 207, each obstacle with its own status.
Response MultistatusOf(const Request& request, const std::vector<Obstacle>& obstacles);

} // namespace trial
