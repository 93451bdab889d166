/* tessera_store.h compiles on its own, twice included, as C99 with pedantic warnings. */
#include "tessera_store.h"
#include "tessera_store.h"

int tessera_store_header_check(void);
int tessera_store_header_check(void) {
  tessera_store_session session = {0};
  return (int)sizeof session + TESSERA_STORE_NETWORK_SIZE;
}
