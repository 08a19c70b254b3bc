#include "server/store/database.h"

#include <sqlite3.h>
#include <stdexcept>

namespace trial {
namespace {

// `path` is the folded path in every table, so that moving or removing a tree is one range of each.
constexpr char schema[] = R"sql(
CREATE TABLE IF NOT EXISTS facts(
    path TEXT PRIMARY KEY, parent TEXT NOT NULL, created INTEGER, modified INTEGER, high_water INTEGER, author TEXT,
    holder TEXT, draft INTEGER, disk_size INTEGER, disk_time INTEGER);
CREATE INDEX IF NOT EXISTS facts_parent ON facts(parent);
CREATE TABLE IF NOT EXISTS backups(path TEXT PRIMARY KEY, file TEXT, modified INTEGER, author TEXT);
CREATE TABLE IF NOT EXISTS versions(
    path TEXT, number INTEGER, label TEXT, comment TEXT, author TEXT, modified INTEGER, file TEXT, PRIMARY KEY(path, number));
CREATE TABLE IF NOT EXISTS properties(path TEXT, name TEXT, value TEXT, PRIMARY KEY(path, name));
CREATE TABLE IF NOT EXISTS locks(
    token TEXT PRIMARY KEY, path TEXT, login TEXT, owner TEXT, shared INTEGER, deep INTEGER, expires INTEGER);
CREATE TABLE IF NOT EXISTS webs(path TEXT PRIMARY KEY, name TEXT);
CREATE TABLE IF NOT EXISTS sign_ins(token TEXT PRIMARY KEY, user TEXT);
)sql";

[[noreturn]] void Fail(sqlite3* handle) {
    throw std::runtime_error(std::string("the store's database failed: ") + (handle ? sqlite3_errmsg(handle) : "out of memory"));
}

} // namespace

Statement::~Statement() {
    if (m_statement) {
        sqlite3_reset(m_statement);
        sqlite3_clear_bindings(m_statement);
    }
}

Statement& Statement::Bind(std::string_view text) {
    // An empty view may have no address, which SQLite would take for NULL.
    const char* data = text.data() ? text.data() : "";
    sqlite3_bind_text(m_statement, ++m_index, data, static_cast<int>(text.size()), SQLITE_TRANSIENT);
    return *this;
}

Statement& Statement::Bind(std::int64_t number) {
    sqlite3_bind_int64(m_statement, ++m_index, number);
    return *this;
}

bool Statement::Step() {
    const int result = sqlite3_step(m_statement);
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        Fail(sqlite3_db_handle(m_statement));
    return result == SQLITE_ROW;
}

void Statement::Run() {
    while (Step()) {
    }
}

std::string Statement::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return text ? std::string(text, sqlite3_column_bytes(m_statement, column)) : std::string();
}

std::int64_t Statement::Number(int column) const { return sqlite3_column_int64(m_statement, column); }

Database::Database(const std::string& file, bool durable) {
    if (sqlite3_open(file.c_str(), &m_handle) != SQLITE_OK) {
        const std::string text = m_handle ? sqlite3_errmsg(m_handle) : "out of memory";
        sqlite3_close(m_handle);
        throw std::runtime_error(file + ": " + text);
    }
    sqlite3_busy_timeout(m_handle, 5000);
    Execute("PRAGMA journal_mode=WAL");
    Execute(durable ? "PRAGMA synchronous=FULL" : "PRAGMA synchronous=OFF");
    Execute(schema);
}

Database::~Database() {
    for (const auto& [sql, statement] : m_statements)
        sqlite3_finalize(statement);
    sqlite3_close(m_handle);
}

Statement Database::Prepare(const char* sql) {
    sqlite3_stmt*& statement = m_statements[sql];
    if (!statement && sqlite3_prepare_v3(m_handle, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK)
        Fail(m_handle);
    return Statement(statement);
}

void Database::Execute(const char* sql) {
    if (sqlite3_exec(m_handle, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        Fail(m_handle);
}

Transaction::~Transaction() {
    if (m_done)
        return;
    try {
        m_database.Execute("ROLLBACK");
    } catch (const std::runtime_error&) {
        // SQLite has rolled back by itself when the failure was grave; the failure itself is on its way already.
    }
}

void Transaction::Commit() {
    m_database.Execute("COMMIT");
    m_done = true;
}

} // namespace trial
