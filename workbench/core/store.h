#pragma once

/// The one database of a state folder (SQLite, write-ahead log), shared by all programs on that folder. What was written
/// survives a crash of the program. Any thread: a transaction keeps the others out.

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

#include "platform/types.h"

struct sqlite3;
struct sqlite3_stmt;

class Store {
public:
    /// Opens or makes the database, mode 0600, and brings its tables up to date. Throws `HostException`.
    explicit Store(const std::filesystem::path& file);
    ~Store();
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    /// A unit of writes: all of them or none. Inside another of the same thread it is part of that one. Without `Commit`
    /// everything is undone. Holds the store, so nothing in it may wait for a server or a user.
    class Transaction {
    public:
        explicit Transaction(Store& store);
        ~Transaction();
        Transaction(const Transaction&) = delete;
        Transaction& operator=(const Transaction&) = delete;
        void Commit();

    private:
        Store& m_store;
        std::unique_lock<std::recursive_mutex> m_hold;
        bool m_is_outermost;
        bool m_is_done = false;
    };

    /// One prepared statement in use; parameters count from 1, columns from 0. Throws `HostException`. Texts are wide and
    /// stored as UTF-8.
    class Query {
    public:
        /// `sql` is a literal.
        Query(Store& store, const char* sql);
        ~Query();
        Query(const Query&) = delete;
        Query& operator=(const Query&) = delete;

        Query& Bind(int index, std::int64_t value);
        Query& Bind(int index, double value);
        Query& Bind(int index, std::wstring_view value);
        Query& BindNull(int index);
        /// The next row; false at the end.
        bool Step();
        void Run() {
            while (Step()) {
            }
        }

        bool IsNull(int column) const;
        std::int64_t Integer(int column) const;
        double Real(int column) const;
        std::wstring Text(int column) const;

    private:
        Store& m_store;
        std::unique_lock<std::recursive_mutex> m_hold;
        const char* m_sql;
        sqlite3_stmt* m_statement = nullptr;
    };

    /// Of the last insert; within a transaction.
    std::int64_t LastRowId() const;
    /// How many rows the last write changed; within a transaction.
    int ChangedRows() const;

private:
    [[noreturn]] void Fail(const char* what) const;
    void Execute(const char* sql);
    void CreateTables();
    sqlite3_stmt* Prepare(const char* sql);

    struct Statements;
    std::recursive_mutex m_lock;
    sqlite3* m_database = nullptr;
    std::unique_ptr<Statements> m_statements;
    int m_depth = 0;
    bool m_undone = false;
};
