#include <unordered_map>

#include "platform/wininet/objects.h"

namespace wininet {
namespace {

constexpr size_t max_idle = 4;

struct Table {
    std::mutex lock;
    std::unordered_map<std::uintptr_t, std::shared_ptr<Object>> objects;
    std::uintptr_t next = 0x00CC0004;
};

Table& Handles() {
    static Table table;
    return table;
}

} // namespace

HINTERNET AddHandle(std::shared_ptr<Object> object) {
    Table& table = Handles();
    const std::lock_guard lock(table.lock);
    const std::uintptr_t number = table.next;
    table.objects.emplace(number, std::move(object));
    table.next += 4;
    return reinterpret_cast<HINTERNET>(number);
}

bool RemoveHandle(HINTERNET handle) {
    std::shared_ptr<Object> removed;
    Table& table = Handles();
    {
        const std::lock_guard lock(table.lock);
        const auto found = table.objects.find(reinterpret_cast<std::uintptr_t>(handle));
        if (found == table.objects.end()) {
            return false;
        }
        removed = std::move(found->second);
        table.objects.erase(found);
    }
    // The object ends outside the lock, since it may have to say goodbye to a server.
    return true;
}

std::shared_ptr<Object> FindObject(HINTERNET handle) {
    Table& table = Handles();
    const std::lock_guard lock(table.lock);
    const auto found = table.objects.find(reinterpret_cast<std::uintptr_t>(handle));
    return found == table.objects.end() ? nullptr : found->second;
}

void ForgetUnusedAccounts() {
    Table& table = Handles();
    const std::lock_guard lock(table.lock);
    for (const auto& [number, object] : table.objects) {
        const auto open = std::dynamic_pointer_cast<OpenObject>(object);
        // One owner is the table, one this loop's own copy.
        if (open != nullptr && open.use_count() == 2) {
            open->accounts.Clear();
        }
    }
}

Origin ConnectObject::OriginOf(bool secure) const {
    const WORD default_port = secure ? INTERNET_DEFAULT_HTTPS_PORT : INTERNET_DEFAULT_HTTP_PORT;
    return {secure, host, port == INTERNET_INVALID_PORT_NUMBER ? default_port : port};
}

std::unique_ptr<Connection> ConnectObject::TakeConnection() {
    {
        const std::lock_guard guard(lock);
        if (!m_idle.empty()) {
            auto connection = std::move(m_idle.back());
            m_idle.pop_back();
            return connection;
        }
    }
    return std::make_unique<Connection>();
}

void ConnectObject::GiveBack(std::unique_ptr<Connection> connection) {
    const std::lock_guard guard(lock);
    if (m_idle.size() < max_idle) {
        m_idle.push_back(std::move(connection));
    }
}

} // namespace wininet
