// A daemon's answer to any bytes: always a whole reply, success or refusal, and a read's value
// terminated in its field. TESSERA_FUZZ_MAPPING selects the mapping daemon, else the session one.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "kit/daemons/requests.h"
#include "kit/store/tessera_store.h"

namespace {

using tessera::kit::Found;

class Properties final : public tessera::kit::PropertyStore {
 public:
  Found read(int space, const char *name, char *value, std::size_t size) override {
    const auto it = values_.find({space, name});
    if (it == values_.end()) {
      return Found::no;
    }
    std::snprintf(value, size, "%s", it->second.c_str());
    return Found::yes;
  }
  Found write(int space, const char *name, const char *value, bool create) override {
    auto it = values_.find({space, name});
    if (it == values_.end() && !create) {
      return Found::no;
    }
    values_[{space, name}] = std::string(value).substr(0, TESSERA_STORE_MAPPED_MAX);
    return Found::yes;
  }

 private:
  std::map<std::pair<int, std::string>, std::string> values_{
      {{TESSERA_STORE_MAPPED, "TELNET/port"}, "23"}, {{TESSERA_STORE_DCSGEN, "x"}, "y"}};
};

class Sessions final : public tessera::kit::SessionStore {
 public:
  Found close(uint32_t id, bool) override { return open_.erase(id) != 0 ? Found::yes : Found::no; }

 private:
  std::set<uint32_t> open_{1, 2, 3};
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  using namespace tessera::wire;
#ifdef TESSERA_FUZZ_MAPPING
  Properties store;
  const DaemonMessage reply = tessera::kit::answer_mapping({data, size}, store);
#else
  Sessions store;
  const DaemonMessage reply = tessera::kit::answer_session({data, size}, store);
#endif
  if (reply.direction != kDirectionSuccess && reply.direction != tessera::kit::kDirectionRefused) {
    std::abort();
  }
  if (reply.direction == kDirectionSuccess &&
      std::memchr(reply.value, '\0', sizeof reply.value) == nullptr) {
    std::abort();
  }
  return 0;
}
