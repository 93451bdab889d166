/* list_sessions: lists the management sessions of a user, or all of them.
 *   list_sessions [USER]
 * A serial session has no address: its text is empty and its address 0. */
#include <stdio.h>

#include <tessera/session.h>

int main(int argc, char **argv) {
  const char *user = argc > 1 ? argv[1] : NULL; /* NULL: any user */
  uint32_t ids[SSN_MAX_IDS];
  uint32_t count = 0;
  int32_t status = ssn_entry_list(user, 0, 0, ids, &count);
  if (status != 0) {
    fprintf(stderr, "listing failed: status %d\n", (int)status);
    return 1;
  }
  for (uint32_t i = 0; i < count; ++i) {
    char name[SSN_USER_SIZE];
    char address[SSN_ADDRESS_TEXT_SIZE];
    uint8_t type = 0;
    uint32_t privilege = 0;
    /* Outputs we don't need are NULL. A session can end between the list and this call. */
    if (ssn_entry_getinfo(ids[i], name, NULL, NULL, address, &type, NULL, NULL, NULL, &privilege,
                          NULL, NULL, NULL) != 0) {
      continue;
    }
    printf("%u\t%s\t%s\t%s\tprivilege %u\n", ids[i], SsnTypeString[type], name,
           address[0] != '\0' ? address : "-", privilege);
  }
  return 0;
}
