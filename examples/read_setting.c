/* read_setting: prints controller settings, by legacy path or store key.
 *   read_setting WEBSERVER/http_port gui_int_http_port DNS/server1
 * The mapping daemon is asked first; the library falls back to the store or the network record
 * by itself. The buffer has the size that every property read needs, whatever `len` says. */
#include <stdio.h>

#include <tessera/orb_cfg.h>

int main(int argc, char **argv) {
  int failed = 0;
  for (int i = 1; i < argc; ++i) {
    char value[TESSERA_PROPERTY_VALUE_SIZE];
    int32_t status = Cfgmgr_Get_Property(argv[i], value, sizeof value);
    if (status == 0) {
      printf("%s=%s\n", argv[i], value);
    } else {
      /* 1: the daemon or the network record failed; 2: bad name, store read failed. */
      fprintf(stderr, "%s: status %d\n", argv[i], (int)status);
      failed = 1;
    }
  }
  return argc > 1 && !failed ? 0 : 1;
}
