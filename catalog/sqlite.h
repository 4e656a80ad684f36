// SQLite as values that clean up after themselves.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <sqlite3.h>

#include "catalog/catalog_errors.h"

namespace morvane {

/// An open connection: read-write, created where missing, full mutex. One thread at a time.
class Connection {
public:
    /// Throws CatalogError (cannotOpen).
    explicit Connection(const std::string& path);

    sqlite3* handle() const { return handle_.get(); }
    /// The error for a failure just now: `text`, and "：" with the engine's last error text.
    CatalogError failure(const char* text) const;
    /// Runs one statement to its end; throws failure(updateFailed).
    void execute(const char* sql);
    /// The integer of a statement with one value; throws prepareFailed or noState.
    std::int64_t scalar(const char* sql);

private:
    struct Closer {
        void operator()(sqlite3* handle) const { sqlite3_close(handle); }
    };
    std::unique_ptr<sqlite3, Closer> handle_;
};

/// A prepared statement; must not outlive its connection.
class Statement {
public:
    /// Throws failure(prepareFailed).
    Statement(const Connection& connection, const std::string& sql);

    /// Forgets the bindings and the progress of the last run.
    void reset();
    /// Binds by number from 1; texts are copied by the engine.
    void bind(int index, std::string_view text);
    void bind(int index, std::int64_t value);
    void bind(int index, double value);
    /// True while there is a row; throws failure(`text`) when the engine fails.
    bool step(const char* text);

    std::string_view text(int column) const;
    std::int64_t integer(int column) const { return sqlite3_column_int64(handle_.get(), column); }
    double real(int column) const { return sqlite3_column_double(handle_.get(), column); }
    int type(int column) const { return sqlite3_column_type(handle_.get(), column); }

private:
    struct Finalizer {
        void operator()(sqlite3_stmt* handle) const { sqlite3_finalize(handle); }
    };
    const Connection& connection_;
    std::unique_ptr<sqlite3_stmt, Finalizer> handle_;
};

/// A write transaction: begun at once (BEGIN IMMEDIATE), rolled back unless committed.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void commit();

private:
    Connection& connection_;
    bool open_ = true;
};

}  // namespace morvane
