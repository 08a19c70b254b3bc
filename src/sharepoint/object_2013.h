#pragma once

/// Files and folders of a `SharePoint2013::Web`. Only the web makes them, and each keeps its web alive.

#include <memory>

#include "sharepoint/sharepoint.h"
#include "sharepoint/web_2013.h"

namespace SharePoint2013 {

class Object : public SharePoint::Object {
public:
    Object(std::shared_ptr<Web> web, SharePoint::Information&& information);

    bool CanEdit() override;
    std::shared_ptr<SharePoint::Web> GetWeb() override;
    const SharePoint::Information& UpdateInformation() override;
    void Rename(const std::wstring& new_url) override;
    void Delete() override;
    /// The REST method that reaches an object of this kind.
    virtual const wchar_t* GetApiMethod() const = 0;

    std::shared_ptr<Web> m_web;
};

class Folder final : public Object, public SharePoint::Folder, public std::enable_shared_from_this<Folder> {
public:
    using Object::Object;

    std::shared_ptr<SharePoint::Folder> AsFolder() override;
    const wchar_t* GetApiMethod() const override { return L"GetFolderByServerRelativeUrl"; }
    std::vector<std::shared_ptr<SharePoint::Object>> GetChildren() override;
};

class File final : public Object, public SharePoint::File, public std::enable_shared_from_this<File> {
public:
    using Object::Object;

    std::shared_ptr<SharePoint::File> AsFile() override;
    const wchar_t* GetApiMethod() const override { return L"GetFileByServerRelativeUrl"; }
    CheckOutState GetCheckOutState(std::wstring* out_user) override;
    bool CheckOut() override;
    bool DiscardCheckOut() override;
    bool CheckIn(const wchar_t* comment, SharePoint::CheckInType type) override;
    void Copy(const std::wstring& new_url) override;
    void Move(const std::wstring& new_url) override;
    Http::Response Download() override;
    Http::Request Upload(std::uint64_t size) override;

private:
    bool CallLists(const wchar_t* method, const std::wstring& body_tail);
};

} // namespace SharePoint2013
