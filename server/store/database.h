// One SQLite file, with the errors turned into exceptions.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

struct sqlite3;
struct sqlite3_stmt;

namespace trial {

/// A prepared statement that is given back, reset, at the end of its scope.
class Statement {
public:
    explicit Statement(sqlite3_stmt* statement) : m_statement(statement) {}
    Statement(Statement&& other) noexcept : m_statement(other.m_statement), m_index(other.m_index) {
        other.m_statement = nullptr;
    }
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;
    ~Statement();

    Statement& Bind(std::string_view text);
    Statement& Bind(std::int64_t number);
    /// Moves to the next row; false after the last. Throws std::runtime_error.
    bool Step();
    /// For statements without rows.
    void Run();
    std::string Text(int column) const;
    std::int64_t Number(int column) const;

private:
    sqlite3_stmt* m_statement;
    int m_index = 0;
};

/// Not locked: its owner's lock covers it.
class Database {
public:
    /// `durable` waits for the disk at each commit, so that not even a power failure takes back what was acknowledged;
    /// without it the file still survives the end of the process.
    Database(const std::string& file, bool durable);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Statements are kept by their text, which has to be a literal.
    Statement Prepare(const char* sql);
    void Execute(const char* sql);

private:
    sqlite3* m_handle = nullptr;
    std::unordered_map<const char*, sqlite3_stmt*> m_statements;
};

/// Rolls back unless it was committed.
class Transaction {
public:
    explicit Transaction(Database& database) : m_database(database) { m_database.Execute("BEGIN IMMEDIATE"); }
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Database& m_database;
    bool m_done = false;
};

} // namespace trial
