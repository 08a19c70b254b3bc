#include "bench/units.h"

#include <atomic>
#include <cstdlib>
#include <new>
#include <stdexcept>

#include <curl/curl.h>

#include "bench/measure.h"
#include "frame/diagnostics/diagnostics.h"
#include "http/session.h"
#include "platform/text.h"
#include "url/compare_urls.h"

namespace {

std::atomic<std::uint64_t> allocations = 0;

} // namespace

// Every allocation of this program is counted; the measured calls must add none.
void* operator new(std::size_t size) {
    allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* const block = std::malloc(size == 0 ? 1 : size)) {
        return block;
    }
    throw std::bad_alloc();
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

constexpr int rounds = 9;
constexpr const char* propfind_body = R"(<?xml version="1.0" ?><D:propfind xmlns:D="DAV:"><D:allprop/></D:propfind>)";

std::size_t Drop(char*, std::size_t size, std::size_t count, void*) { return size * count; }

/// What a session calls itself; libcurl formats requests byte by byte, so that a shorter request would compare less.
constexpr const char* user_agent =
    "Mozilla/4.0 (compatible; MSIE 7.0; Windows NT 6.3; Trident/7.0; .NET4.0E; .NET4.0C; KovEditor)";

/// A reused easy handle with the same request, byte for byte.
class EasyPropfind {
public:
    explicit EasyPropfind(const std::string& url) : m_easy(curl_easy_init()) {
        for (const char* line :
             {"Accept: application/xml, text/xml", "X-Forms_Based_Auth_Accepted: t", "Depth: 0", "Expect:", "Content-Type:"}) {
            m_headers = curl_slist_append(m_headers, line);
        }
        curl_easy_setopt(m_easy, CURLOPT_USERAGENT, user_agent);
        curl_easy_setopt(m_easy, CURLOPT_URL, url.c_str());
        curl_easy_setopt(m_easy, CURLOPT_CUSTOMREQUEST, "PROPFIND");
        curl_easy_setopt(m_easy, CURLOPT_POSTFIELDS, propfind_body);
        curl_easy_setopt(m_easy, CURLOPT_HTTPHEADER, m_headers);
        curl_easy_setopt(m_easy, CURLOPT_WRITEFUNCTION, Drop);
    }
    ~EasyPropfind() {
        curl_slist_free_all(m_headers);
        curl_easy_cleanup(m_easy);
    }
    EasyPropfind(const EasyPropfind&) = delete;
    EasyPropfind& operator=(const EasyPropfind&) = delete;

    void Send() {
        long status = 0;
        if (curl_easy_perform(m_easy) != CURLE_OK || curl_easy_getinfo(m_easy, CURLINFO_RESPONSE_CODE, &status) != CURLE_OK ||
            status != 207) {
            throw std::runtime_error("the PROPFIND of libcurl failed");
        }
    }

private:
    CURL* m_easy;
    curl_slist* m_headers = nullptr;
};

void SendThroughSession(Http::Session& session, const std::wstring& path) {
    static const wchar_t* accept[] = {L"application/xml", L"text/xml", nullptr};
    const Http::Response response = session.SendRequest(L"PROPFIND", path.c_str(), accept, L"Depth: 0", propfind_body, 0, true);
    char buffer[1024];
    while (Http::ReadBody(response.GetHandle(), buffer, sizeof buffer) > 0) {
    }
}

double WallOf(int count, const std::function<void()>& call) {
    return CostOf([&] {
               for (int i = 0; i < count; ++i) {
                   call();
               }
           })
        .wall;
}

/// The median of the ratios of interleaved rounds, so that a machine that changes its speed changes both sides.
double RatioOf(int round_count, int count, const std::function<void()>& ours, const std::function<void()>& theirs) {
    std::vector<double> ratios;
    for (int round = 0; round < round_count; ++round) {
        const double mine = WallOf(count, ours);
        ratios.push_back(mine / WallOf(count, theirs));
    }
    return Median(ratios);
}

} // namespace

double PropfindRatio(const std::string& origin, const std::string& path) {
    EasyPropfind easy(origin + "/" + path);
    const std::shared_ptr<Http::Session> session = Http::Session::Create(WideFromUtf8(origin).c_str(), {});
    const std::wstring wide_path = WideFromUtf8(path);
    easy.Send();
    SendThroughSession(*session, wide_path);
    // Short rounds and many of them: where the system puts the server's thread changes the time of a whole round several times.
    return RatioOf(
        301, 20, [&] { SendThroughSession(*session, wide_path); }, [&] { easy.Send(); });
}

namespace {

constexpr int trace_calls = 5'000'000;

[[gnu::noinline]] void Traced(int value) { TRACE_FORMAT(LogLevel::verbose, L"value {}", value); }

[[gnu::noinline]] void Compared(int value) {
    if (g_log_level.load(std::memory_order_relaxed) >= LogLevel::verbose) [[unlikely]] {
        std::abort();
    }
    asm volatile("" : : "r"(value));
}

} // namespace

TraceFigures MeasureTrace() {
    const std::uint64_t before = allocations;
    TraceFigures figures;
    std::vector<double> ratios;
    for (int round = 0; round < rounds; ++round) {
        const double traced = CostOf([] {
                                  for (int i = 0; i < trace_calls; ++i) {
                                      Traced(i);
                                  }
                              }).wall;
        const double compared = CostOf([] {
                                    for (int i = 0; i < trace_calls; ++i) {
                                        Compared(i);
                                    }
                                }).wall;
        ratios.push_back(traced / compared);
        figures.nanoseconds = traced / trace_calls * 1e9;
    }
    figures.ratio = Median(ratios);
    // What the measuring itself allocates is a handful, not one a call.
    figures.allocations = (allocations - before) / trace_calls;
    return figures;
}

CompareFigures MeasureCompareUrls() {
    constexpr int calls = 100'000;
    const wchar_t* const folder = L"https://server.example/sites/team/Shared Documents";
    const wchar_t* const file = L"https://server.example/sites/team/Shared Documents/Reports/Annual report 2026.pdf";
    const char* const narrow_folder = "https://server.example/sites/team/Shared%20Documents";
    const char* const narrow_file = "https://server.example/sites/team/Shared%20Documents/Reports/Annual%20report%202026.pdf";
    const auto parse = [](const char* url) {
        CURLU* const handle = curl_url();
        curl_url_set(handle, CURLUPART_URL, url, 0);
        curl_url_cleanup(handle);
    };
    CompareFigures figures;
    const std::uint64_t before = allocations;
    const double ours = WallOf(calls, [&] {
        if (CompareUrls(folder, file) != CompareUrlsResult::url1_is_parent) {
            throw std::runtime_error("CompareUrls is wrong");
        }
    });
    figures.allocations = (allocations - before) / calls;
    figures.nanoseconds = ours / calls * 1e9;
    figures.ratio = RatioOf(
        rounds, calls / 5, [&] { (void)CompareUrls(folder, file); },
        [&] {
            parse(narrow_folder);
            parse(narrow_file);
        });
    return figures;
}
