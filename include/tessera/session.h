/* Management sessions: identity, listing, inspection and closing. */
#ifndef TESSERA_SESSION_H
#define TESSERA_SESSION_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Session type codes, the index of SsnTypeString. */
#define SSN_TYPE_UNKNOWN 0
#define SSN_TYPE_SERIAL 1
#define SSN_TYPE_TELNET 2
#define SSN_TYPE_SSH 3
#define SSN_TYPE_WEBGUI 4
#define SSN_TYPE_TOLVEX 5
#define SSN_TYPE_LOCAL 6
#define SSN_TYPE_SMSP 7
#define SSN_TYPE_CLP 8
#define SSN_TYPE_SERIAL_NOAUTH 9
#define SSN_TYPE_VMEDIA 10
#define SSN_TYPE_VKVM 11
#define SSN_TYPE_SOL 12
#define SSN_TYPE_REDFISH 13
#define SSN_TYPE_COUNT 14

/* Child kinds of ssn_has_subssn and ssn_subssn_count. */
#define SSN_CHILD_VKVM 0
#define SSN_CHILD_VMEDIA 1

/* Results of the listing and inspection calls. */
#define SSN_ERR_NULL_COUNT 8193   /* ssn_entry_list without a count */
#define SSN_ERR_NO_SESSION 8198   /* ssn_entry_getinfo of a session the store cannot read */
#define SSN_ERR_NO_RESOURCES 12300 /* ssn_close: no memory for the daemon message */
#define SSN_ERR_NO_DAEMON 12307   /* ssn_close: the session daemon can't be reached */

/* Sizes of the caller's buffers. */
#define SSN_MAX_IDS 100           /* ids in the array of ssn_entry_list */
#define SSN_USER_SIZE 321         /* user name of ssn_entry_getinfo, terminator included */
#define SSN_ADDRESS_TEXT_SIZE 67  /* address text of ssn_entry_getinfo, terminator included */
#define SSN_IP_TEXT_SIZE 16       /* text of ssn_iptostr */

/* Display labels of the session types ("Unknown", "Serial", ..., "REDFISH"), indexed by type
 * code 0 to 13. */
TESSERA_API extern const char *const SsnTypeString[SSN_TYPE_COUNT];

/* The type code of a session's type keyword ("SSH", "webgui", "vKVM", ...), compared whole and
 * case-sensitively; 0 for any other text and for null. Labels are no keywords. */
TESSERA_API uint32_t str2ssntype(const char *keyword);
/* Writes the dotted-quad form of a session address (first octet in bits 0 to 7) into text, a
 * buffer of at least 16 bytes, or "serial" for address 0. Returns text (null for a null text). */
TESSERA_API char *ssn_iptostr(char *text, uint32_t address);
/* The session address of a dotted-quad text; each number counts by its low eight bits, and an
 * octet that no number fills (or a null text) is 0. */
TESSERA_API uint32_t ssn_atoip(const char *text);
/* The id of the session this process runs in, read from SESSION_ID at each call; 0 for none. */
TESSERA_API uint32_t ssn_get_sid(void);
/* The store's id of the current session: ORB_SESSION_ID, or SESSION_ID when ORB_SESSION_ID is
 * unset; 0 for none (an empty ORB_SESSION_ID also gives 0). */
TESSERA_API uint32_t ssn_get_orbsid(void);

/* Lists the controller's sessions that match every filter given: a user name (null for any), a
 * type code (0 for any) and a session address (0 for any). Zeroes all 100 entries of ids, then
 * fills them with the matching ids and sets *count. Returns 0, SSN_ERR_NULL_COUNT, or the store's
 * failure value (with *count 0). */
TESSERA_API int32_t ssn_entry_list(const char *user, uint32_t type, uint32_t address,
                                   uint32_t *ids, uint32_t *count);
/* Reads one session's details. A null output is skipped. Returns 0, or SSN_ERR_NO_SESSION with
 * no output written when the store cannot read the session. The address text of a local session
 * reads "127.0.0.1"; an IPv6 session has address 0 and its text. */
TESSERA_API int32_t ssn_entry_getinfo(
    uint32_t id,
    char *user,            /* SSN_USER_SIZE bytes: the user name */
    uint32_t *one,         /* receives 1 */
    uint32_t *address,     /* the session address, 0 for IPv6 */
    char *address_text,    /* SSN_ADDRESS_TEXT_SIZE bytes: the address as text */
    uint8_t *type,         /* the type code */
    uint32_t *zero,        /* receives 0 */
    uint32_t *has_vkvm,    /* non-zero when the session has a virtual console child */
    uint32_t *has_vmedia,  /* non-zero when the session has a virtual media child */
    uint32_t *privilege,   /* the user's privilege, 0 when unknown */
    uint32_t *word,        /* the store's session word, passed on unread */
    uint32_t *limit,       /* receives 0x7fffffff */
    uint32_t *zero2);      /* receives 0 */
/* Non-zero when session id has a child session of the given kind (SSN_CHILD_VKVM or
 * SSN_CHILD_VMEDIA); 0 for none, another kind, or a failed store call. */
TESSERA_API int32_t ssn_has_subssn(uint32_t id, uint32_t kind);
/* The number of sessions of the given child kind in the whole system; 0 for another kind. */
TESSERA_API uint32_t ssn_subssn_count(uint32_t kind);
/* The privilege of a user as the store gives it; 0 when the store fails or user is null. */
TESSERA_API uint32_t get_privilege(const char *user);

/* Entry points kept for older tools; they do no work. ssn_open returns 100, the others 0. */
TESSERA_API int32_t ssn_open(void);
/* Writes 1 through state and 0xFFFFFFFF through limit (a null one is skipped); returns 0 for
 * every session. The first three arguments are not read. */
TESSERA_API int32_t ssn_check(const void *arg1, const void *arg2, const void *arg3,
                              uint32_t *state, uint32_t *limit);
TESSERA_API int32_t ssn_unlock(void);

/* Asks the session daemon to close session `id`. Returns 0 once the daemon has answered, whatever
 * it answered; SSN_ERR_NO_DAEMON when it can't be reached; SSN_ERR_NO_RESOURCES when out of
 * memory. */
TESSERA_API int32_t ssn_close(uint32_t id);
/* As ssn_close, marking the request as a close of the store's session. */
TESSERA_API int32_t ssn_orb_close(uint32_t id);
TESSERA_API int32_t sc_ssn_open(void);
TESSERA_API int32_t sc_ssn_unlock(void);

TESSERA_END_DECLS

#endif /* TESSERA_SESSION_H */
