#include "fake_store.h"

#include <algorithm>
#include <cstring>

#include "store_client/session_record.h"
#include "tessera/store_client.h"

namespace tessera::test {
namespace {

// Failure sense of each store function: 0 for the ones whose success is non-zero.
int32_t default_failure(const std::string &function) {
  const bool zero_is_success =
      function == "orb_session_get_children_info" || function == "orb_session_get_type_info" ||
      function == "orb_function_execute" || function == "orb_event_occurred";
  return zero_is_success ? -1 : 0;
}

void put_text(SessionRecord &record, std::size_t offset, std::size_t width,
              const std::string &text) {
  std::memcpy(record.data() + offset, text.data(), std::min(text.size(), width));
}

std::string record_text(const SessionRecord &record, std::size_t offset, std::size_t width) {
  const auto *begin = reinterpret_cast<const char *>(record.data() + offset);
  return {begin, strnlen(begin, width)};
}

}  // namespace

SessionRecord make_session_record(const SessionFields &fields) {
  SessionRecord record{};
  put_text(record, 0, 67, fields.type);
  put_text(record, 68, 320, fields.user);
  put_text(record, 389, 66, fields.address);
  std::memcpy(record.data() + 456, &fields.word, sizeof fields.word);
  std::memcpy(record.data() + 464, &fields.children, sizeof fields.children);
  return record;
}

FakeStore &FakeStore::instance() {
  static FakeStore store;
  return store;
}

void FakeStore::reset() {
  std::lock_guard lock(mutex_);
  values_.clear();
  failures_.clear();
  name_failures_.clear();
  sessions_.clear();
  listings_.clear();
  functions_.clear();
  event_result_ = 0;
  fill_past_count_ = false;
  reported_count_.reset();
  calls_.clear();
}

void FakeStore::set_bool(const std::string &key, bool value) {
  std::lock_guard lock(mutex_);
  values_[key] = value;
}

void FakeStore::set_int(const std::string &key, int32_t value) {
  std::lock_guard lock(mutex_);
  values_[key] = value;
}

void FakeStore::set_str(const std::string &key, std::string value) {
  std::lock_guard lock(mutex_);
  values_[key] = std::move(value);
}

void FakeStore::erase(const std::string &key) {
  std::lock_guard lock(mutex_);
  values_.erase(key);
}

std::optional<FakeStore::Value> FakeStore::value(const std::string &key) const {
  std::lock_guard lock(mutex_);
  auto it = values_.find(key);
  return it == values_.end() ? std::nullopt : std::optional<Value>(it->second);
}

void FakeStore::fail(const std::string &function, std::optional<int32_t> result) {
  std::lock_guard lock(mutex_);
  failures_[function] = result.value_or(default_failure(function));
}

void FakeStore::fail(const std::string &function, const std::string &name,
                     std::optional<int32_t> result) {
  std::lock_guard lock(mutex_);
  name_failures_[function][name] = result.value_or(default_failure(function));
}

void FakeStore::add_session(uint32_t id, const SessionRecord &record,
                            std::vector<uint32_t> children) {
  std::lock_guard lock(mutex_);
  sessions_.emplace_back(id, Session{record, std::move(children)});
}

void FakeStore::set_type_listing(const std::string &type, std::vector<uint32_t> ids) {
  std::lock_guard lock(mutex_);
  listings_[type] = std::move(ids);
}

void FakeStore::set_fill_past_count(bool fill) {
  std::lock_guard lock(mutex_);
  fill_past_count_ = fill;
}

void FakeStore::set_reported_count(std::optional<int32_t> count) {
  std::lock_guard lock(mutex_);
  reported_count_ = count;
}

void FakeStore::on_function(const std::string &name, RemoteFunction function) {
  std::lock_guard lock(mutex_);
  functions_[name] = std::move(function);
}

void FakeStore::set_event_result(int32_t result) {
  std::lock_guard lock(mutex_);
  event_result_ = result;
}

std::vector<StoreCall> FakeStore::calls() const {
  std::lock_guard lock(mutex_);
  return calls_;
}

std::vector<StoreCall> FakeStore::calls(std::string_view function) const {
  std::lock_guard lock(mutex_);
  std::vector<StoreCall> out;
  std::copy_if(calls_.begin(), calls_.end(), std::back_inserter(out),
               [&](const StoreCall &call) { return call.function == function; });
  return out;
}

void FakeStore::clear_calls() {
  std::lock_guard lock(mutex_);
  calls_.clear();
}

std::optional<int32_t> FakeStore::failure(const std::string &function,
                                          const std::string &name) const {
  if (auto by_name = name_failures_.find(function); by_name != name_failures_.end()) {
    if (auto it = by_name->second.find(name); it != by_name->second.end()) {
      return it->second;
    }
  }
  if (auto it = failures_.find(function); it != failures_.end()) {
    return it->second;
  }
  return std::nullopt;
}

void FakeStore::record(StoreCall call) {
  calls_.push_back(std::move(call));
}

int32_t FakeStore::get_value(const char *function, const char *key, Value *out, const void *buffer,
                             uint32_t capacity) {
  std::lock_guard lock(mutex_);
  const std::string name = key != nullptr ? key : "";
  record({.function = function, .name = name, .capacity = capacity, .output = buffer});
  if (auto failed = failure(function, name)) {
    return *failed;
  }
  auto it = values_.find(name);
  if (it == values_.end() || it->second.index() != out->index()) {
    return 0;
  }
  *out = it->second;
  return 1;
}

int32_t FakeStore::set_value(const char *function, const char *key, Value value, int32_t flag) {
  std::lock_guard lock(mutex_);
  const std::string name = key != nullptr ? key : "";
  StoreCall call{.function = function, .name = name, .flag = flag};
  if (const auto *text = std::get_if<std::string>(&value)) {
    call.text = *text;
  } else {
    call.value =
        std::holds_alternative<bool>(value) ? std::get<bool>(value) : std::get<int32_t>(value);
  }
  record(std::move(call));
  if (auto failed = failure(function, name)) {
    return *failed;
  }
  values_[name] = std::move(value);
  return 1;
}

int32_t FakeStore::session_info(uint32_t id, void *out) {
  std::lock_guard lock(mutex_);
  record({.function = "orb_session_get_info", .value = id, .output = out});
  if (auto failed = failure("orb_session_get_info", std::to_string(id))) {
    return *failed;
  }
  for (const auto &[session_id, session] : sessions_) {
    if (session_id == id) {
      std::memcpy(out, session.record.data(), kSessionRecordSize);
      return 1;
    }
  }
  return 0;
}

int32_t FakeStore::session_list(const char *function, const std::string &name, uint32_t session,
                                int32_t *count, uint32_t *ids) {
  std::lock_guard lock(mutex_);
  const int32_t capacity = count != nullptr ? *count : 0;
  record(
      {.function = function, .name = name, .value = session, .count_in = capacity, .output = ids});
  const std::string failure_name = name.empty() ? std::to_string(session) : name;
  if (auto failed = failure(function, failure_name)) {
    return *failed;
  }
  std::vector<uint32_t> found;
  if (std::string(function) == "orb_session_get_children_info") {
    auto it = std::find_if(sessions_.begin(), sessions_.end(),
                           [&](const auto &entry) { return entry.first == session; });
    if (it == sessions_.end()) {
      return default_failure(function);
    }
    found = it->second.children;
  } else if (auto listed = listings_.find(name); listed != listings_.end()) {
    found = listed->second;
  } else {
    for (const auto &[id, entry] : sessions_) {
      if (name.empty() || record_text(entry.record, 0, 68) == name) {
        found.push_back(id);
      }
    }
  }
  // Fill at most the capacity passed in; hand back how many there are.
  const auto room = fill_past_count_ ? static_cast<int32_t>(wire::kIdArrayLength)
                                     : std::max<int32_t>(capacity, 0);
  const auto filled = std::min<std::size_t>(found.size(), static_cast<std::size_t>(room));
  if (ids != nullptr) {
    std::copy_n(found.begin(), filled, ids);
  }
  if (count != nullptr) {
    *count = reported_count_.value_or(static_cast<int32_t>(found.size()));
  }
  return 0;
}

int32_t FakeStore::execute(const char *name, uint32_t *length, const void *input, uint32_t capacity,
                           void *output) {
  RemoteFunction function;
  {
    std::lock_guard lock(mutex_);
    StoreCall call{.function = "orb_function_execute",
                   .name = name != nullptr ? name : "",
                   .capacity = capacity,
                   .output = output};
    if (length != nullptr) {
      call.length_in = *length;
    }
    if (input != nullptr) {
      call.input_null = false;
      const auto *bytes = static_cast<const uint8_t *>(input);
      call.input.assign(bytes, bytes + std::min<uint32_t>(call.length_in, 1U << 20));
    }
    const std::string function_name = call.name;
    record(std::move(call));
    if (auto failed = failure("orb_function_execute", function_name)) {
      return *failed;
    }
    auto it = functions_.find(function_name);
    if (it == functions_.end()) {
      return -1;
    }
    function = it->second;
  }
  return function(length, input, capacity, output);
}

int32_t FakeStore::event(const char *name, int32_t arg1, int32_t arg2) {
  std::lock_guard lock(mutex_);
  const std::string event_name = name != nullptr ? name : "";
  record({.function = "orb_event_occurred", .name = event_name, .value = arg1, .flag = arg2});
  if (auto failed = failure("orb_event_occurred", event_name)) {
    return *failed;
  }
  return event_result_;
}

}  // namespace tessera::test

// ---- The store client's C interface --------------------------------------------------------

using tessera::test::FakeStore;

namespace {

// Reads `key` as a value of type T and, when found, hands it to `deliver`.
template <class T, class Deliver>
int32_t get_typed(const char *function, const char *key, const void *buffer, uint32_t capacity,
                  Deliver deliver) {
  FakeStore::Value out = T{};
  const int32_t result = FakeStore::instance().get_value(function, key, &out, buffer, capacity);
  if (result != 0 && buffer != nullptr) {
    deliver(std::get<T>(out));
  }
  return result;
}

}  // namespace

extern "C" {

int32_t orb_config_get_bool(const char *key, uint8_t *value) {
  return get_typed<bool>(__func__, key, value, 0, [value](bool flag) { *value = flag ? 1 : 0; });
}

int32_t orb_config_get_int(const char *key, int32_t *value) {
  return get_typed<int32_t>(__func__, key, value, 0, [value](int32_t number) { *value = number; });
}

// No capacity: the caller's buffer must hold the value as stored.
int32_t orb_config_get_str(const char *key, char *value) {
  return get_typed<std::string>(__func__, key, value, 0, [value](const std::string &text) {
    std::memcpy(value, text.c_str(), text.size() + 1);
  });
}

int32_t orb_config_get_str_n(const char *key, char *value, uint32_t capacity) {
  return get_typed<std::string>(__func__, key, value, capacity, [&](const std::string &text) {
    if (capacity > 0) {
      const std::size_t n = std::min<std::size_t>(text.size(), capacity - 1);
      std::memcpy(value, text.data(), n);
      value[n] = '\0';
    }
  });
}

int32_t orb_config_set_bool(const char *key, int32_t value, int32_t flag) {
  return FakeStore::instance().set_value(__func__, key, value != 0, flag);
}

int32_t orb_config_set_int(const char *key, int32_t value, int32_t flag) {
  return FakeStore::instance().set_value(__func__, key, value, flag);
}

int32_t orb_config_set_str(const char *key, const char *value, int32_t flag) {
  return FakeStore::instance().set_value(__func__, key, std::string(value != nullptr ? value : ""),
                                         flag);
}

int32_t orb_config_set_str_n(const char *key, const char *value, int32_t flag) {
  return FakeStore::instance().set_value(__func__, key, std::string(value != nullptr ? value : ""),
                                         flag);
}

int32_t orb_session_get_info(uint32_t id, void *record) {
  return FakeStore::instance().session_info(id, record);
}

int32_t orb_session_get_children_info(uint32_t id, int32_t *count, uint32_t *ids) {
  return FakeStore::instance().session_list(__func__, "", id, count, ids);
}

int32_t orb_session_get_type_info(const char *type, int32_t *count, uint32_t *ids) {
  return FakeStore::instance().session_list(__func__, type != nullptr ? type : "", 0, count, ids);
}

int32_t orb_function_execute(const char *name, uint32_t *length, const void *input,
                             uint32_t capacity, void *output) {
  return FakeStore::instance().execute(name, length, input, capacity, output);
}

int32_t orb_event_occurred(const char *name, int32_t arg1, int32_t arg2) {
  return FakeStore::instance().event(name, arg1, arg2);
}

}  // extern "C"
