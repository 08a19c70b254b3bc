#include <gtest/gtest.h>

#include "host/object_bases.h"
#include "platform/ole_browser.h"

namespace {

/// What a class makes: knows its site and how it is held.
class Contained final : public cCoClassUnknownT<IOleObject, IRunnableObject> {
public:
    HRESULT SetClientSite(IOleClientSite* new_site) override {
        site = new_site;
        return S_OK;
    }
    HRESULT DoVerb(LONG, MSG*, IOleClientSite*, LONG, HWND, const RECT*) override { return E_NOTIMPL; }
    HRESULT SetExtent(DWORD, SIZE*) override { return E_NOTIMPL; }
    HRESULT LockRunning(BOOL lock, BOOL) override {
        locks += lock != FALSE ? 1 : -1;
        return S_OK;
    }
    HRESULT SetContainedObject(BOOL contained) override {
        is_contained = contained != FALSE;
        return S_OK;
    }

    IOleClientSite* site = nullptr;
    int locks = 0;
    bool is_contained = false;
};

class Factory final : public cCoClassUnknownT<IClassFactory> {
public:
    HRESULT CreateInstance(IUnknown*, REFIID id, void** out_object) override {
        made = MakeObject<Contained>();
        return made->QueryInterface(id, out_object);
    }
    ComPtr<Contained> made;
};

struct NoSite final : IOleClientSite {
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    HRESULT SaveObject() override { return S_OK; }
    HRESULT GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT GetContainer(IOleContainer**) override { return E_NOINTERFACE; }
    HRESULT ShowObject() override { return S_OK; }
    HRESULT OnShowWindow(BOOL) override { return S_OK; }
    HRESULT RequestNewObjectLayout() override { return E_NOTIMPL; }
};

struct NoStorage final : IStorage {
    HRESULT QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
    ULONG AddRef() override { return 1; }
    ULONG Release() override { return 1; }
    HRESULT CreateStream(const OLECHAR*, DWORD, DWORD, DWORD, IStream**) override { return E_NOTIMPL; }
    HRESULT OpenStream(const OLECHAR*, void*, DWORD, DWORD, IStream**) override { return E_NOTIMPL; }
    HRESULT CreateStorage(const OLECHAR*, DWORD, DWORD, DWORD, IStorage**) override { return E_NOTIMPL; }
    HRESULT OpenStorage(const OLECHAR*, IStorage*, DWORD, SNB, DWORD, IStorage**) override { return E_NOTIMPL; }
    HRESULT CopyTo(DWORD, const IID*, SNB, IStorage*) override { return E_NOTIMPL; }
    HRESULT MoveElementTo(const OLECHAR*, IStorage*, const OLECHAR*, DWORD) override { return E_NOTIMPL; }
    HRESULT Commit(DWORD) override { return E_NOTIMPL; }
    HRESULT Revert() override { return E_NOTIMPL; }
    HRESULT EnumElements(DWORD, void*, DWORD, IEnumSTATSTG**) override { return E_NOTIMPL; }
    HRESULT DestroyElement(const OLECHAR*) override { return E_NOTIMPL; }
    HRESULT RenameElement(const OLECHAR*, const OLECHAR*) override { return E_NOTIMPL; }
    HRESULT SetElementTimes(const OLECHAR*, const FILETIME*, const FILETIME*, const FILETIME*) override { return E_NOTIMPL; }
    HRESULT SetClass(REFCLSID) override { return S_OK; }
    HRESULT SetStateBits(DWORD, DWORD) override { return E_NOTIMPL; }
    HRESULT Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
};

HRESULT CreateBrowser(ComPtr<IOleObject>& out_object, IOleClientSite* site = nullptr) {
    NoStorage storage;
    return OleCreate(CLSID_WebBrowser, IID_IOleObject, OLERENDER_DRAW, nullptr, site, &storage,
                     reinterpret_cast<void**>(&out_object));
}

TEST(OleCreate, AsksTheClassThatTheHostRegistered) {
    ComPtr<IOleObject> object;
    EXPECT_EQ(CreateBrowser(object), CO_E_NOTINITIALIZED);
    ASSERT_EQ(OleInitialize(nullptr), S_OK);
    EXPECT_EQ(CreateBrowser(object), REGDB_E_CLASSNOTREG) << "a host without a browser";

    const auto factory = MakeObject<Factory>();
    DWORD number = 0;
    DWORD second = 0;
    ASSERT_EQ(CoRegisterClassObject(CLSID_WebBrowser, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &number), S_OK);
    EXPECT_EQ(CoRegisterClassObject(CLSID_WebBrowser, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &second), CO_E_OBJISREG);
    NoSite site;
    ASSERT_EQ(CreateBrowser(object, &site), S_OK);
    EXPECT_EQ(object.Get(), static_cast<IOleObject*>(factory->made.Get()));
    EXPECT_EQ(factory->made->site, &site);
    EXPECT_EQ(OleSetContainedObject(object, TRUE), S_OK);
    EXPECT_TRUE(factory->made->is_contained);
    EXPECT_EQ(OleLockRunning(object, TRUE, FALSE), S_OK);
    EXPECT_EQ(factory->made->locks, 1);

    EXPECT_EQ(CoRevokeClassObject(number), S_OK);
    EXPECT_EQ(CoRevokeClassObject(number), E_INVALIDARG);
    EXPECT_EQ(CreateBrowser(object), REGDB_E_CLASSNOTREG);
    EXPECT_TRUE(object.IsNull());
    OleUninitialize();
}

TEST(OleInitialize, IsCountedUntilItsLastEnd) {
    ASSERT_EQ(OleInitialize(nullptr), S_OK);
    EXPECT_EQ(OleInitialize(nullptr), S_FALSE);
    OleUninitialize();
    ComPtr<IOleObject> object;
    EXPECT_EQ(CreateBrowser(object), REGDB_E_CLASSNOTREG);
    OleUninitialize();
    OleUninitialize();
    EXPECT_EQ(CreateBrowser(object), CO_E_NOTINITIALIZED);
}

TEST(OleLockRunning, LeavesAnObjectAloneThatRunsAnyway) {
    const auto factory = MakeObject<Factory>();
    EXPECT_EQ(OleLockRunning(factory, TRUE, FALSE), S_OK);
    EXPECT_EQ(OleSetContainedObject(factory, TRUE), S_OK);
    EXPECT_EQ(OleLockRunning(nullptr, TRUE, FALSE), E_INVALIDARG);
    EXPECT_EQ(OleSetContainedObject(nullptr, TRUE), E_INVALIDARG);
}

} // namespace
