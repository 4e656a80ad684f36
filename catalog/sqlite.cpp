#include "catalog/sqlite.h"

namespace morvane {

namespace {

CatalogError failureOf(sqlite3* handle, const char* text) {
    std::string description = text;
    if (handle != nullptr) {
        const std::string engineText = sqlite3_errmsg(handle);
        if (!engineText.empty())
            description += "：" + engineText;
    }
    return CatalogError(description);
}

}  // namespace

Connection::Connection(const std::string& path) {
    sqlite3* opened = nullptr;
    const int result = sqlite3_open_v2(
        path.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
    handle_.reset(opened);
    if (result != SQLITE_OK)
        throw failure(catalogText::cannotOpen);
}

CatalogError Connection::failure(const char* text) const {
    return failureOf(handle_.get(), text);
}

void Connection::execute(const char* sql) {
    if (sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK)
        throw failure(catalogText::updateFailed);
}

std::int64_t Connection::scalar(const char* sql) {
    Statement statement(*this, sql);
    if (!statement.step(catalogText::noState))
        throw failure(catalogText::noState);
    return statement.integer(0);
}

Statement::Statement(const Connection& connection, const std::string& sql) : connection_(connection) {
    sqlite3_stmt* prepared = nullptr;
    const int result = sqlite3_prepare_v2(connection.handle(), sql.c_str(), static_cast<int>(sql.size()) + 1,
                                          &prepared, nullptr);
    handle_.reset(prepared);
    if (result != SQLITE_OK)
        throw connection.failure(catalogText::prepareFailed);
}

void Statement::reset() {
    sqlite3_reset(handle_.get());
    sqlite3_clear_bindings(handle_.get());
}

// Texts too large for the engine stay unbound, which NOT NULL or an empty result then shows.
void Statement::bind(int index, std::string_view text) {
    const char* const bytes = text.empty() ? "" : text.data();  // a null pointer would bind NULL
    sqlite3_bind_text64(handle_.get(), index, bytes, text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void Statement::bind(int index, std::int64_t value) {
    sqlite3_bind_int64(handle_.get(), index, value);
}

void Statement::bind(int index, double value) {
    sqlite3_bind_double(handle_.get(), index, value);
}

bool Statement::step(const char* text) {
    const int result = sqlite3_step(handle_.get());
    if (result != SQLITE_ROW && result != SQLITE_DONE)
        throw connection_.failure(text);
    return result == SQLITE_ROW;
}

std::string_view Statement::text(int column) const {
    const unsigned char* bytes = sqlite3_column_text(handle_.get(), column);
    if (bytes == nullptr)
        return {};
    return {reinterpret_cast<const char*>(bytes),
            static_cast<std::size_t>(sqlite3_column_bytes(handle_.get(), column))};
}

Transaction::Transaction(Connection& connection) : connection_(connection) {
    connection_.execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    if (open_)
        sqlite3_exec(connection_.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::commit() {
    connection_.execute("COMMIT");
    open_ = false;
}

}  // namespace morvane
