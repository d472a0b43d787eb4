#ifndef VELMAR_TOOLKIT_DATABASE_H
#define VELMAR_TOOLKIT_DATABASE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace velmar::toolkit {

/// A connection to a database in a file. Use it from one thread at a time; all of it throws
/// Failure.
class Database {
 public:
  enum class Access {
    Read,
    Write,  ///< it is made if it is not there
  };

  Database(const std::string& path, Access access);

  const std::string& path() const { return path_; }
  /// From here on all but SELECT, and SQL that is wrong, throws UsageError. Of a catalogue.
  void allowSelectOnly();
  /// Readers and a writer need not wait for each other from here on, also of other processes.
  void useWriteAheadLog();
  /// One statement or several, without results.
  void run(const std::string& sql);
  /// The first column of the first row; 0 without rows.
  std::int64_t number(const std::string& sql);
  /// Of the row that was inserted last.
  std::int64_t lastId() const;

 private:
  friend class Statement;
  struct Close {
    void operator()(sqlite3* connection) const;
  };

  void open(const std::string& uri, int flags);
  /// Throws the Failure of the last call.
  [[noreturn]] void fail() const;

  std::string path_;
  std::unique_ptr<sqlite3, Close> connection_;
  bool selectsOnly_ = false;
};

/// One prepared statement.
class Statement {
 public:
  /// The database must outlive it.
  Statement(Database& database, const std::string& sql);

  /// Gives the next parameter a value.
  Statement& bind(std::int64_t value);
  Statement& bind(double value);  ///< NULL if it is not a number
  Statement& bind(const std::string& text);
  template <typename Value>
  Statement& bind(const std::optional<Value>& value) {
    return value ? bind(*value) : bindNull();
  }
  Statement& bindNull();

  /// Goes to the next row; false if there is none.
  bool step();
  /// For a statement without rows: runs it, and gets it ready for other parameters.
  void run();

  // Of the row.
  int columns() const;
  std::string columnName(int column) const;
  bool isNull(int column) const;
  bool isInteger(int column) const;
  bool isReal(int column) const;
  std::int64_t number(int column) const;
  double real(int column) const;
  std::string text(int column) const;

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };

  using Prepared = std::unique_ptr<sqlite3_stmt, Finalize>;

  void check(int code) const;
  /// The first statement in `sql`, which is moved behind it.
  Prepared prepare(const char*& sql) const;

  Database& database_;
  Prepared statement_;
  int bound_ = 0;
};

/// Changes that come together or, unless it is committed, not at all. Waits for other writers.
class Transaction {
 public:
  explicit Transaction(Database& database);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  void commit();

 private:
  Database& database_;
  bool isOpen_ = true;
};

}  // namespace velmar::toolkit

#endif
