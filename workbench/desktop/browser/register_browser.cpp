#include "workbench/desktop/browser/register_browser.h"

#include "host/object_bases.h"
#include "workbench/desktop/browser/ole_web_browser.h"

namespace {

class BrowserFactory final : public cCoClassUnknownT<IClassFactory> {
public:
    explicit BrowserFactory(BrowserSettings settings)
        : m_settings(std::make_shared<const BrowserSettings>(std::move(settings))) {}

    HRESULT CreateInstance(IUnknown* outer, REFIID id, void** out_object) override {
        if (out_object == nullptr) {
            return E_POINTER;
        }
        *out_object = nullptr;
        if (outer != nullptr) {
            return CLASS_E_NOAGGREGATION;
        }
        const ComPtr<OleWebBrowser> browser = MakeObject<OleWebBrowser>(m_settings);
        return browser.IsNull() ? E_OUTOFMEMORY : browser->QueryInterface(id, out_object);
    }

private:
    ~BrowserFactory() override = default;

    const std::shared_ptr<const BrowserSettings> m_settings;
};

} // namespace

BrowserRegistration::BrowserRegistration(BrowserSettings settings) {
    const ComPtr<BrowserFactory> factory = MakeObject<BrowserFactory>(std::move(settings));
    (void)CoRegisterClassObject(CLSID_WebBrowser, factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_number);
}

BrowserRegistration::~BrowserRegistration() { (void)CoRevokeClassObject(m_number); }
