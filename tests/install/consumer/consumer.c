/* A tool in plain C, built against an installed libtessera. */
#include <stdio.h>
#include <string.h>

#include <tessera/tessera.h>

int main(void) {
  const char *name = TraceFileName("tools/consumer.c");
  if (strcmp(name, "consumer.c") != 0) {
    fprintf(stderr, "unexpected: %s\n", name);
    return 1;
  }
  printf("libtessera %d.%d.%d: %s\n", TESSERA_VERSION_MAJOR, TESSERA_VERSION_MINOR,
         TESSERA_VERSION_PATCH, name);
  return 0;
}
