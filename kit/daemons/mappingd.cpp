// tessera-mappingd: the mapping daemon of a workstation. It serves reads and writes (operations
// 10 and 11) of the properties that the store says it owns, and of its DCSGEN properties (12 and
// 13); for every other property it answers status 4, and the library goes to the store itself.
#include "kit/daemons/requests.h"
#include "kit/daemons/server.h"
#include "kit/store/tessera_store.h"

namespace {

using tessera::kit::Found;
using tessera::kit::found_of;

class StoreProperties final : public tessera::kit::PropertyStore {
 public:
  Found read(int space, const char *name, char *value, std::size_t size) override {
    return found_of(tessera_store_get_mapped(space, name, value, size));
  }
  Found write(int space, const char *name, const char *value, bool create) override {
    return found_of(create ? tessera_store_map_property(space, name, value)
                           : tessera_store_set_mapped(space, name, value));
  }
};

}  // namespace

int main(int argc, char **argv) {
  StoreProperties store;
  return tessera::kit::run_daemon(
      argc, argv, "tessera-mappingd", tessera::wire::kMappingSocketPath,
      "The mapping daemon of the workstation kit: serves the properties it owns in the store\n"
      "and answers status 4 for the others.",
      [&store](std::span<const uint8_t> request) {
        return tessera::kit::answer_mapping(request, store);
      });
}
