// An in-memory store client for tests. It defines every orb_* function, keeps typed values,
// sessions and remote functions, records each call with what it was given, and fails on request.
// One instance serves the process; the test main resets it before every test.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tessera::test {

// One call that reached the store client, with its arguments as passed.
struct StoreCall {
  std::string function;          // "orb_config_set_int", "orb_function_execute", ...
  std::string name;              // key, session type, remote function or event name
  std::string text;              // text value of set_str and set_str_n
  int64_t value = 0;             // value of set_bool and set_int; session id; first event arg
  int64_t flag = 0;              // third argument of the set calls; second event arg
  uint32_t capacity = 0;         // capacity of get_str_n and function_execute
  int32_t count_in = 0;          // count passed in to the session list calls
  uint32_t length_in = 0;        // length word on entry of function_execute
  bool input_null = true;        // function_execute got no input buffer
  std::vector<uint8_t> input;    // the input block of function_execute (length_in bytes)
  const void *output = nullptr;  // output buffer the caller passed
};

// The session record as the store hands it out: 480 bytes.
inline constexpr std::size_t kSessionRecordSize = 480;
using SessionRecord = std::array<uint8_t, kSessionRecordSize>;

struct SessionFields {
  std::string type;      // keyword at offset 0
  std::string user;      // offset 68
  std::string address;   // offset 389
  uint32_t word = 0;     // offset 456
  int32_t children = 0;  // offset 464
};
SessionRecord make_session_record(const SessionFields &fields);

// (length word, input, output capacity, output) -> result, 0 for success.
using RemoteFunction =
    std::function<int32_t(uint32_t *length, const void *input, uint32_t capacity, void *output)>;

class FakeStore {
 public:
  using Value = std::variant<bool, int32_t, std::string>;

  static FakeStore &instance();

  // Forget values, sessions, remote functions, failures and calls.
  void reset();

  // Values. A get of another type than the one stored fails, as does a get of a missing key.
  void set_bool(const std::string &key, bool value);
  void set_int(const std::string &key, int32_t value);
  void set_str(const std::string &key, std::string value);
  void erase(const std::string &key);
  [[nodiscard]] std::optional<Value> value(const std::string &key) const;

  // Failures: every call of `function`, or only those naming `name`, return `result`.
  // Without a result, the function's own failure sense: 0, or -1 for the calls whose success is 0.
  void fail(const std::string &function, std::optional<int32_t> result = {});
  void fail(const std::string &function, const std::string &name,
            std::optional<int32_t> result = {});

  // Sessions, listed in the order added. orb_session_get_type_info lists the sessions whose
  // record holds the type keyword ("" lists all) unless a listing has been set for that type.
  void add_session(uint32_t id, const SessionRecord &record, std::vector<uint32_t> children = {});
  void set_type_listing(const std::string &type, std::vector<uint32_t> ids);
  // A careless store: the list calls fill the whole id array whatever count they were given, or
  // report this count instead of how many they found.
  void set_fill_past_count(bool fill);
  void set_reported_count(std::optional<int32_t> count);

  // Remote functions by name; a name without a function fails with -1.
  void on_function(const std::string &name, RemoteFunction function);

  // Events answer with this result (0 unless told).
  void set_event_result(int32_t result);

  [[nodiscard]] std::vector<StoreCall> calls() const;
  [[nodiscard]] std::vector<StoreCall> calls(std::string_view function) const;
  void clear_calls();

  // Entry points of the orb_* functions; not for tests to call.
  int32_t get_value(const char *function, const char *key, Value *out, const void *buffer,
                    uint32_t capacity = 0);
  int32_t set_value(const char *function, const char *key, Value value, int32_t flag);
  int32_t session_info(uint32_t id, void *record);
  int32_t session_list(const char *function, const std::string &name, uint32_t session,
                       int32_t *count, uint32_t *ids);
  int32_t execute(const char *name, uint32_t *length, const void *input, uint32_t capacity,
                  void *output);
  int32_t event(const char *name, int32_t arg1, int32_t arg2);

 private:
  struct Session {
    SessionRecord record{};
    std::vector<uint32_t> children;
  };

  [[nodiscard]] std::optional<int32_t> failure(const std::string &function,
                                               const std::string &name) const;
  void record(StoreCall call);

  mutable std::mutex mutex_;
  std::map<std::string, Value> values_;
  std::map<std::string, int32_t> failures_;  // by function
  std::map<std::string, std::map<std::string, int32_t>> name_failures_;
  std::vector<std::pair<uint32_t, Session>> sessions_;  // in order added
  std::map<std::string, std::vector<uint32_t>> listings_;
  std::map<std::string, RemoteFunction> functions_;
  int32_t event_result_ = 0;
  bool fill_past_count_ = false;
  std::optional<int32_t> reported_count_;
  std::vector<StoreCall> calls_;
};

}  // namespace tessera::test
