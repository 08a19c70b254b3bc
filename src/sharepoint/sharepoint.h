#pragma once

/// A server as the rest of the system sees it: a web, and the folders and files in it. Abstract; the implementation stands
/// in web_2013.h and object_2013.h.
///
/// No operation here is locked; callers keep to one operation at a time on one object. All that talk to the server block
/// and throw HttpException (a status outside 200..399), ApiException (transport) and HResultException.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "http/transfer.h"
#include "sharepoint/information.h"

namespace SharePoint {

class File;
class Folder;
class Web;

class Object {
public:
    virtual ~Object() = default;

    /// This object in another role; null when it hasn't that role. They never reach the server.
    virtual std::shared_ptr<File> AsFile() { return nullptr; }
    virtual std::shared_ptr<Folder> AsFolder() { return nullptr; }
    virtual std::shared_ptr<Web> AsWeb() { return nullptr; }

    /// May the signed-in user change the object? False also when that can't be found out; never throws.
    virtual bool CanEdit() = 0;
    /// The web of the object; a web gives itself.
    virtual std::shared_ptr<Web> GetWeb() = 0;
    /// Asks the server again and returns the record, which stays valid until the next call.
    virtual const Information& UpdateInformation() = 0;
    /// Moves the object to the absolute URL `new_url`, over whatever stands there. The record keeps the old path.
    virtual void Rename(const std::wstring& new_url) = 0;
    virtual void Delete() = 0;

    /// The path that the object was made with.
    std::wstring m_path;
    /// The snapshot of when the object was bound, listed or last updated.
    Information m_information;
};

class Folder {
public:
    virtual ~Folder() = default;

    /// What is in the folder, in the server's order, by one request.
    virtual std::vector<std::shared_ptr<Object>> GetChildren() = 0;
};

class Web : public Folder {
public:
    /// What a caller wants a URL to be.
    enum class BindObjectType : std::uint32_t { any = 0, file = 1, folder = 2 };

    /// The object at an absolute URL or a sharing link; null when there is none or it is of another type.
    virtual std::shared_ptr<Object> BindObject(const std::wstring& url, BindObjectType type) = 0;
    /// A new empty file, with its missing parent folders; null when the URL isn't inside this web or no parent exists.
    virtual std::shared_ptr<Object> CreateFile(const std::wstring& url) = 0;
    /// A folder, with its missing parents; one that exists is as good. Null as for `CreateFile`.
    virtual std::shared_ptr<Object> CreateFolder(const std::wstring& url) = 0;
};

class File {
public:
    /// Who holds a file; `unknown` is held, while the signed-in user couldn't be found out.
    enum class CheckOutState : std::uint32_t { none = 0, me = 1, other_user = 2, unknown = 3 };

    /// Asks the server. `out_user` may be null; it receives the display name of the holder, if there is one.
    virtual CheckOutState GetCheckOutState(std::wstring* out_user) = 0;
    /// These three return false when the server refuses in its answer.
    virtual bool CheckOut() = 0;
    virtual bool DiscardCheckOut() = 0;
    virtual bool CheckIn(const wchar_t* comment, CheckInType type) = 0;
    /// To the absolute URL `new_url`, over whatever stands there. The record keeps the old path.
    virtual void Copy(const std::wstring& new_url) = 0;
    virtual void Move(const std::wstring& new_url) = 0;
    /// The content; the body is not yet read.
    virtual Http::Response Download() = 0;
    /// A replacement of the content by exactly `size` bytes, ready for them.
    virtual Http::Request Upload(std::uint64_t size) = 0;

protected:
    ~File() = default;
};

} // namespace SharePoint
