#pragma once

namespace Utility::SharepointChecker {

/// Does the text, a URL, a sharing link or a WebDAV network path, name something on a server of the right kind? Signs in
/// nowhere and shows nothing; one to three requests each time. Throws as `Session::IsSharePoint`.
bool IsSharePoint(const wchar_t* url);

} // namespace Utility::SharepointChecker
