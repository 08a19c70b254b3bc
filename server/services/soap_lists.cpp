#include "server/services/soap.h"

namespace trial {
namespace {

// A file of another web than the one that is called isn't in any of its lists.
std::string FileOfWeb(const Call& call, const XmlElement& arguments) {
    const std::string path = SoapPath(call, arguments);
    if (call.webs.DeepestAt(path) != call.web_path)
        throw SoapFault("the file belongs to another web");
    if (!call.store.Find(path))
        throw SoapFault("the file isn't there");
    return path;
}

std::string Truth(bool value) { return value ? "true" : "false"; }

std::string CheckOutFile(const Call& call, const XmlElement& arguments) {
    const std::string path = FileOfWeb(call, arguments);
    return Truth(call.user.may_write && call.store.CheckOut(path, call.user.login));
}

std::string UndoCheckOut(const Call& call, const XmlElement& arguments) {
    const std::string path = FileOfWeb(call, arguments);
    return Truth(call.user.may_write && call.store.UndoCheckOut(path, call.user.login));
}

std::string CheckInFile(const Call& call, const XmlElement& arguments) {
    const std::string path = FileOfWeb(call, arguments);
    const std::string comment = SoapArgument(arguments, "comment");
    const std::string type = SoapArgument(arguments, "CheckinType");
    if (type.size() != 1 || type[0] < '0' || type[0] > '2')
        throw SoapFault("CheckinType is 0, 1 or 2");
    return Truth(call.user.may_write &&
                 call.store.CheckIn(path, call.user.login, comment, static_cast<CheckInType>(type[0] - '0')));
}

constexpr SoapMethod methods[] = {{"CheckOutFile", CheckOutFile}, {"UndoCheckOut", UndoCheckOut}, {"CheckInFile", CheckInFile}};

} // namespace

const SoapService lists_service{"Lists", "", methods};

} // namespace trial
