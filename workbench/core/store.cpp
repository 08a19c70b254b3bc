#include "workbench/core/store.h"

#include <fcntl.h>
#include <map>
#include <sqlite3.h>
#include <vector>

#include "platform/errors.h"
#include "platform/text.h"
#include "workbench/core/errors.h"
#include "workbench/core/state_folder.h"

namespace {

/// How long another program may hold the database.
constexpr int BusyTimeoutMs = 30'000;

constexpr const char* tables = R"(
CREATE TABLE IF NOT EXISTS cab_node(
    id INTEGER PRIMARY KEY, parent INTEGER REFERENCES cab_node(id) ON DELETE CASCADE, position INTEGER NOT NULL, key TEXT,
    type INTEGER NOT NULL, value);
CREATE UNIQUE INDEX IF NOT EXISTS cab_node_position ON cab_node(parent, position);
CREATE INDEX IF NOT EXISTS cab_node_key ON cab_node(parent, key);
CREATE TABLE IF NOT EXISTS cab(name TEXT PRIMARY KEY, node INTEGER NOT NULL REFERENCES cab_node(id));
CREATE TABLE IF NOT EXISTS account(
    id INTEGER PRIMARY KEY, url TEXT NOT NULL COLLATE ANYCASE, cab INTEGER NOT NULL REFERENCES cab_node(id));
CREATE TABLE IF NOT EXISTS unsaved(
    id INTEGER PRIMARY KEY AUTOINCREMENT, url TEXT NOT NULL COLLATE ANYCASE, path TEXT NOT NULL UNIQUE,
    server_time INTEGER, server_size INTEGER, is_complete INTEGER NOT NULL);
CREATE TABLE IF NOT EXISTS uploaded(url TEXT PRIMARY KEY COLLATE ANYCASE);
)";

HRESULT ResultOfSqlite(int code) {
    switch (code & 0xFF) {
    case SQLITE_FULL:
        return HRESULT_FROM_WIN32(ERROR_DISK_FULL);
    case SQLITE_NOMEM:
        return E_OUTOFMEMORY;
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
        return HRESULT_FROM_WIN32(ERROR_BUSY);
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_CANTOPEN:
        return E_ACCESSDENIED;
    case SQLITE_IOERR:
        return HRESULT_FROM_WIN32(ERROR_IO_DEVICE);
    case SQLITE_CORRUPT:
    case SQLITE_NOTADB:
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    default:
        return E_FAIL;
    }
}

/// URLs compare without letter case, by the same folding as everywhere else.
int CompareAnyCase(void*, int length1, const void* text1, int length2, const void* text2) {
    const std::string_view a(static_cast<const char*>(text1), static_cast<std::size_t>(length1));
    const std::string_view b(static_cast<const char*>(text2), static_cast<std::size_t>(length2));
    try {
        const std::wstring wide_a = WideFromUtf8(a);
        const std::wstring wide_b = WideFromUtf8(b);
        return CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, wide_a.data(), static_cast<int>(wide_a.size()), wide_b.data(),
                              static_cast<int>(wide_b.size())) -
               CSTR_EQUAL;
    } catch (const std::exception&) {
        return a.compare(b);
    }
}

} // namespace

/// Prepared statements that nobody uses now, by their text.
struct Store::Statements {
    std::map<std::string_view, std::vector<sqlite3_stmt*>> free;
};

Store::Store(const std::filesystem::path& file) : m_statements(std::make_unique<Statements>()) {
    // Made here, since the library would make it with the mode of the process's mask; its side files take over the mode.
    OpenPrivateFile(file, O_RDWR | O_CREAT).Close();
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOFOLLOW | SQLITE_OPEN_NOMUTEX;
    const int outcome = sqlite3_open_v2(file.c_str(), &m_database, flags, nullptr);
    try {
        if (outcome != SQLITE_OK) {
            Fail("open");
        }
        sqlite3_extended_result_codes(m_database, 1);
        sqlite3_busy_timeout(m_database, BusyTimeoutMs);
        sqlite3_create_collation(m_database, "ANYCASE", SQLITE_UTF8, nullptr, CompareAnyCase);
        Execute("PRAGMA journal_mode=WAL");
        Execute("PRAGMA synchronous=NORMAL");
        Execute("PRAGMA foreign_keys=ON");
        Execute("PRAGMA secure_delete=ON");
        CreateTables();
    } catch (...) {
        sqlite3_close(m_database);
        throw;
    }
}

Store::~Store() {
    for (const auto& [text, statements] : m_statements->free) {
        for (sqlite3_stmt* const statement : statements) {
            sqlite3_finalize(statement);
        }
    }
    sqlite3_close(m_database);
}

void Store::CreateTables() {
    Transaction transaction(*this);
    Execute(tables);
    transaction.Commit();
}

void Store::Fail(const char* what) const {
    const int code = m_database != nullptr ? sqlite3_extended_errcode(m_database) : SQLITE_NOMEM;
    throw HostException(ResultOfSqlite(code), std::string("The store can't ") + what + ": " +
                                                  (m_database != nullptr ? sqlite3_errmsg(m_database) : "no memory"));
}

void Store::Execute(const char* sql) {
    if (sqlite3_exec(m_database, sql, nullptr, nullptr, nullptr) != SQLITE_OK) {
        Fail("be written");
    }
}

sqlite3_stmt* Store::Prepare(const char* sql) {
    if (auto& free = m_statements->free[sql]; !free.empty()) {
        sqlite3_stmt* const statement = free.back();
        free.pop_back();
        return statement;
    }
    sqlite3_stmt* statement = nullptr;
    if (sqlite3_prepare_v3(m_database, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
        Fail("be asked");
    }
    return statement;
}

std::int64_t Store::LastRowId() const { return sqlite3_last_insert_rowid(m_database); }

int Store::ChangedRows() const { return sqlite3_changes(m_database); }

Store::Transaction::Transaction(Store& store) : m_store(store), m_hold(store.m_lock), m_is_outermost(store.m_depth == 0) {
    if (m_is_outermost) {
        m_store.m_undone = false;
        // At once for writing: one that reads first and then wants to write would fail when another program wrote in between.
        m_store.Execute("BEGIN IMMEDIATE");
    }
    ++m_store.m_depth;
}

Store::Transaction::~Transaction() {
    --m_store.m_depth;
    if (m_is_done) {
        return;
    }
    m_store.m_undone = true;
    if (m_is_outermost) {
        // Some failures have undone it already; then there is nothing to roll back, which is no failure.
        sqlite3_exec(m_store.m_database, "ROLLBACK", nullptr, nullptr, nullptr);
    }
}

void Store::Transaction::Commit() {
    if (m_store.m_undone) {
        throw HostException(E_FAIL, "The store can't keep a change of which a part failed");
    }
    if (m_is_outermost) {
        m_store.Execute("COMMIT");
    }
    m_is_done = true;
}

Store::Query::Query(Store& store, const char* sql)
    : m_store(store), m_hold(store.m_lock), m_sql(sql), m_statement(store.Prepare(sql)) {}

Store::Query::~Query() {
    sqlite3_reset(m_statement);
    sqlite3_clear_bindings(m_statement);
    m_store.m_statements->free[m_sql].push_back(m_statement);
}

Store::Query& Store::Query::Bind(int index, std::int64_t value) {
    if (sqlite3_bind_int64(m_statement, index, value) != SQLITE_OK) {
        m_store.Fail("take a number");
    }
    return *this;
}

Store::Query& Store::Query::Bind(int index, double value) {
    if (sqlite3_bind_double(m_statement, index, value) != SQLITE_OK) {
        m_store.Fail("take a number");
    }
    return *this;
}

Store::Query& Store::Query::Bind(int index, std::wstring_view value) {
    const std::string utf8 = Utf8FromWide(value);
    if (sqlite3_bind_text64(m_statement, index, utf8.data(), utf8.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK) {
        m_store.Fail("take a text");
    }
    return *this;
}

Store::Query& Store::Query::BindNull(int index) {
    if (sqlite3_bind_null(m_statement, index) != SQLITE_OK) {
        m_store.Fail("take an empty value");
    }
    return *this;
}

bool Store::Query::Step() {
    switch (sqlite3_step(m_statement)) {
    case SQLITE_ROW:
        return true;
    case SQLITE_DONE:
        return false;
    default:
        m_store.Fail("be read or written");
    }
}

bool Store::Query::IsNull(int column) const { return sqlite3_column_type(m_statement, column) == SQLITE_NULL; }

std::int64_t Store::Query::Integer(int column) const { return sqlite3_column_int64(m_statement, column); }

double Store::Query::Real(int column) const { return sqlite3_column_double(m_statement, column); }

std::wstring Store::Query::Text(int column) const {
    const auto* const text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    return text != nullptr ? WideFromUtf8({text, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column))}) : L"";
}
