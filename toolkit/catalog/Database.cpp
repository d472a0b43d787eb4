#include "toolkit/catalog/Database.h"

#include <sqlite3.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "base/HexText.h"
#include "toolkit/base/Failure.h"

namespace velmar::toolkit {

namespace {

constexpr std::chrono::milliseconds kBusyTime(60000);

// For a URI, in which some characters mean something.
std::string escaped(const std::string& path) {
  std::string text;
  for (const char character : path) {
    if (character == '%' || character == '?' || character == '#') {
      const auto byte = static_cast<unsigned char>(character);
      text += "%" + detail::bytesToHex(&byte, 1);
    } else {
      text += character;
    }
  }
  return text;
}

}  // namespace

void Database::Close::operator()(sqlite3* connection) const { sqlite3_close_v2(connection); }

Database::Database(const std::string& path, Access access) : path_(path) {
  const std::string absolute = std::filesystem::absolute(path);
  const std::string uri = "file:" + escaped(absolute);
  if (access == Access::Write) {
    open(uri, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
    return;
  }
  if (::access(absolute.c_str(), F_OK) != 0)
    throw Failure::ofSystem(path_, "cannot be read", errno);
  // A reader, too, needs a file beside it, unless nobody can write there.
  struct statvfs system {};
  const bool isFixed =
      ::statvfs(absolute.c_str(), &system) == 0 && (system.f_flag & ST_RDONLY) != 0;
  open(isFixed ? uri + "?immutable=1" : uri, SQLITE_OPEN_READONLY);
}

void Database::allowSelectOnly() {
  // The tree of places makes statements of its own when it is first used.
  number("SELECT count(*) FROM places WHERE stretch = 0");
  const auto isAllowed = [](void*, int action, const char*, const char*, const char*,
                            const char*) -> int {
    const bool isSelect = action == SQLITE_SELECT || action == SQLITE_READ ||
                          action == SQLITE_FUNCTION || action == SQLITE_RECURSIVE;
    return isSelect ? SQLITE_OK : SQLITE_DENY;
  };
  sqlite3_set_authorizer(connection_.get(), isAllowed, nullptr);
  selectsOnly_ = true;
}

void Database::open(const std::string& uri, int flags) {
  sqlite3* connection = nullptr;
  const int code = sqlite3_open_v2(uri.c_str(), &connection,
                                   flags | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr);
  connection_.reset(connection);
  if (code != SQLITE_OK) fail();
  sqlite3_busy_timeout(connection, static_cast<int>(kBusyTime.count()));
}

void Database::fail() const {
  const int code = sqlite3_errcode(connection_.get());
  if (code == SQLITE_AUTH) throw UsageError("only a SELECT is answered");
  if (code == SQLITE_ERROR && selectsOnly_) throw UsageError(sqlite3_errmsg(connection_.get()));
  const std::string words = code == SQLITE_NOTADB ? "it is not a database"
                            : code == SQLITE_BUSY ? "another process keeps it locked"
                                                  : sqlite3_errmsg(connection_.get());
  throw Failure(path_, words,
                code == SQLITE_NOTADB ? VELMAR_ERROR_CODE_INVALID_PARAMETER_E
                                      : VELMAR_ERROR_CODE_FILE_OPEN_FAIL_E);
}

void Database::useWriteAheadLog() {
  using std::chrono::steady_clock;
  const auto end = steady_clock::now() + kBusyTime;
  // Here SQLite itself does not wait for another process that does the same.
  while (sqlite3_exec(connection_.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr) !=
         SQLITE_OK) {
    if (sqlite3_errcode(connection_.get()) != SQLITE_BUSY || steady_clock::now() > end) fail();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

void Database::run(const std::string& sql) {
  if (sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

std::int64_t Database::number(const std::string& sql) {
  Statement statement(*this, sql);
  return statement.step() ? statement.number(0) : 0;
}

std::int64_t Database::lastId() const { return sqlite3_last_insert_rowid(connection_.get()); }

void Statement::Finalize::operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }

Statement::Statement(Database& database, const std::string& sql) : database_(database) {
  const char* rest = sql.c_str();
  statement_ = prepare(rest);
  // Of comments there is nothing to prepare.
  if (!statement_ || prepare(rest)) throw UsageError("one SQL statement is needed");
}

Statement::Prepared Statement::prepare(const char*& sql) const {
  sqlite3_stmt* statement = nullptr;
  check(sqlite3_prepare_v2(database_.connection_.get(), sql, -1, &statement, &sql));
  return Prepared(statement);
}

void Statement::check(int code) const {
  if (code != SQLITE_OK) database_.fail();
}

Statement& Statement::bind(std::int64_t value) {
  check(sqlite3_bind_int64(statement_.get(), ++bound_, value));
  return *this;
}

Statement& Statement::bind(double value) {
  check(sqlite3_bind_double(statement_.get(), ++bound_, value));
  return *this;
}

Statement& Statement::bind(const std::string& text) {
  check(sqlite3_bind_text64(statement_.get(), ++bound_, text.data(), text.size(), SQLITE_TRANSIENT,
                            SQLITE_UTF8));
  return *this;
}

Statement& Statement::bindNull() {
  check(sqlite3_bind_null(statement_.get(), ++bound_));
  return *this;
}

bool Statement::step() {
  const int code = sqlite3_step(statement_.get());
  if (code != SQLITE_ROW && code != SQLITE_DONE) database_.fail();
  return code == SQLITE_ROW;
}

void Statement::run() {
  while (step()) {
  }
  check(sqlite3_reset(statement_.get()));
  bound_ = 0;
}

int Statement::columns() const { return sqlite3_column_count(statement_.get()); }

std::string Statement::columnName(int column) const {
  return sqlite3_column_name(statement_.get(), column);
}

bool Statement::isNull(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_NULL;
}

bool Statement::isInteger(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_INTEGER;
}

bool Statement::isReal(int column) const {
  return sqlite3_column_type(statement_.get(), column) == SQLITE_FLOAT;
}

std::int64_t Statement::number(int column) const {
  return sqlite3_column_int64(statement_.get(), column);
}

double Statement::real(int column) const { return sqlite3_column_double(statement_.get(), column); }

std::string Statement::text(int column) const {
  const auto* text = sqlite3_column_blob(statement_.get(), column);
  if (text == nullptr) return "";
  return {static_cast<const char*>(text),
          static_cast<std::size_t>(sqlite3_column_bytes(statement_.get(), column))};
}

Transaction::Transaction(Database& database) : database_(database) {
  database_.run("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!isOpen_) return;
  try {
    database_.run("ROLLBACK");
  } catch (const std::exception&) {
    // It is undone when the connection closes, at the latest.
  }
}

void Transaction::commit() {
  database_.run("COMMIT");
  isOpen_ = false;
}

}  // namespace velmar::toolkit
