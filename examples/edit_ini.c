/* edit_ini: sets one key of an INI file, creating the file, section or key when missing.
 *   edit_ini app.ini network mtu 1500
 * The file is written back in the library's normal form: comments, keys before the first section
 * and text behind a ';' are gone. It is saved to a temporary file and renamed over the old one,
 * so a failed write leaves the old file whole. */
#include <stdio.h>
#include <string.h>

#include <tessera/inifile.h>

int main(int argc, char **argv) {
  if (argc != 5) {
    fprintf(stderr, "usage: edit_ini FILE SECTION KEY VALUE\n");
    return 2;
  }
  InifileDocument *document = NULL;
  if (inifileOpen(argv[1], &document) != 0) {
    document = inifileCreate(); /* no file yet */
  }
  if (document == NULL) {
    return 1;
  }
  char temporary[4096];
  int32_t status = inifileSetKeyValueByName(document, argv[2], argv[3], argv[4]);
  if (status == 0 && strlen(argv[1]) + 5 <= sizeof temporary) {
    snprintf(temporary, sizeof temporary, "%s.new", argv[1]);
    status = inifileSave(document, temporary);
    if (status == 0 && rename(temporary, argv[1]) != 0) {
      status = 11;
    }
  }
  inifileClose(document);
  if (status != 0) {
    fprintf(stderr, "%s: status %d\n", argv[1], (int)status);
  }
  return status == 0 ? 0 : 1;
}
