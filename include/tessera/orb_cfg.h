/* Controller settings by name: catalogue, store and daemon access, defaults, status helpers. */
#ifndef TESSERA_ORB_CFG_H
#define TESSERA_ORB_CFG_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Property type codes, as convert_prop_name returns them. */
#define PROP_TYPE_NONE 0            /* no declared form: text at the store */
#define PROP_TYPE_RESERVED 1        /* no value form: refused by store reads and writes */
#define PROP_TYPE_BOOL 2            /* flag, "0" or "1" */
#define PROP_TYPE_INT 3             /* signed decimal number */
#define PROP_TYPE_BYTE 4            /* unsigned byte of the network record */
#define PROP_TYPE_SHORT 5           /* number; unsigned 16-bit in the network record */
#define PROP_TYPE_STR 6             /* text */
#define PROP_TYPE_STR_N 7           /* text through the counted store calls */
#define PROP_TYPE_ADDR_PREFIX 8     /* address with prefix, shown as "address/prefix" */
#define PROP_TYPE_PREFIX 9          /* the prefix half of an address with prefix */
#define PROP_TYPE_CONFIG_CHANGED 10 /* change markers: refused by store reads and writes */

/* Kinds of special_prop_table rows. */
#define SPECIAL_PROP_KIND_NETWORK 0  /* a field of the network record */
#define SPECIAL_PROP_KIND_FIRMWARE 3 /* a firmware value: never read, writes refused */

/* One row of special_prop_table: a property that lives outside the store's single values.
 * Rows are 16 bytes on 32-bit targets (24 on 64-bit); the table ends with a row whose source
 * is 0 and whose name is the empty text. */
typedef struct SpecialProp {
  const char *name;    /* legacy path */
  int32_t kind;        /* SPECIAL_PROP_KIND_* */
  int32_t source;      /* field selector for get_src_addr; 0 only in the end row */
  uint16_t clear_code; /* clear bit of a text field (0x8000 set: first mask), else 0 */
} SpecialProp;

/* The 58 network and firmware properties, in lookup order, and the end row. */
TESSERA_API extern const SpecialProp special_prop_table[];

/* Size of the network record that "netGetCurrentIfConfig" and "netSetNetConfig" carry. */
#define TESSERA_NETWORK_RECORD_SIZE 4768

/* Bytes that `out` of the property reads must hold, whatever `len` says: a value from the store
 * (up to 1024 characters and the terminator) is written whole before it is cut to `len` - 1. */
#define TESSERA_PROPERTY_VALUE_SIZE 1025

/* Reads a property by legacy path or store key, without the mapping daemon, into `out`
 * (TESSERA_PROPERTY_VALUE_SIZE bytes), then cuts it to `len` - 1 characters. Empties `out`
 * first. Returns 0, 1 (network record unavailable) or 2 (bad argument, store read failed, type
 * not readable). */
TESSERA_API int32_t Cfgmgr_Get_Property_ori(const char *name, char *out, unsigned int len);

/* As Cfgmgr_Get_Property_ori, but leaves `out` as given when nothing is read (firmware
 * properties), so `out` must then hold a terminated text. */
TESSERA_API int32_t Cfgmgr_Ext_Get_Property(const char *name, char *out, unsigned int len);

/* Writes a property by legacy path or store key, without the mapping daemon. Returns 0, 1 (bad
 * argument, store write failed, not writable), or the network apply's own non-zero result. */
TESSERA_API int32_t Cfgmgr_Set_Property_ori(const char *name, const char *value);

/* Same as Cfgmgr_Set_Property_ori. */
TESSERA_API int32_t Cfgmgr_Ext_Set_Property(const char *name, const char *value);

/* Reads a property from the store, by its catalogue type, into `out` (TESSERA_PROPERTY_VALUE_SIZE
 * bytes).
 * Returns 0, or 2 when the store read fails or the type can't be read. */
TESSERA_API int32_t ORBGetPropertyValue(const char *name, char *out);

/* Writes a property to the store by its catalogue type. Returns 0, or 1 when the store refuses
 * it or the type can't be written. */
TESSERA_API int32_t ORBSetPropertyValue(const char *name, const char *value);

/* Index of the special_prop_table row for `name` (or for its stem without a trailing number of up
 * to three digits), or -1 when the property lives at the store. */
TESSERA_API int32_t Is_Special_Prop(const char *name);

/* Translates a legacy path or store key into the name used at the store, written to `key`
 * (128 bytes). Returns the property type code; 0 for names outside the catalogue. */
TESSERA_API int32_t convert_prop_name(const char *name, char *key);

/* Index of the first catalogue row whose legacy path is `path`, or -1. */
TESSERA_API int32_t findLegacyPropertyIndex(const char *path);

/* Address of the field of special_prop_table[index] inside the record at `record`, or null when
 * the row selects no field. */
TESSERA_API void *get_src_addr(void *record, int32_t index);

/* Size of the message that the mapping and session daemons take, in both directions. */
#define TESSERA_DAEMON_MESSAGE_SIZE 1724
/* What session_manager_ipmiextd_communicate returns when the daemon can't be reached. */
#define TESSERA_DAEMON_EXCHANGE_FAILED 12307

/* Sends the 1724-byte daemon message at `message` to the daemon that serves its operation code
 * (10 to 13: the mapping daemon; others: the session daemon) and puts the reply over it. Returns
 * 0 when a reply of at least one byte came, 12307 when the daemon couldn't be reached or gave
 * nothing back. Waits as long as the daemon takes. */
TESSERA_API int32_t session_manager_ipmiextd_communicate(void *message);

/* Reads a property through the mapping daemon into `out`, at most `len` - 1 characters (`len`
 * at least 1). Returns 0, 1 (daemon unreachable, or its reply unusable) or the daemon's status
 * of a refusal (4: not the daemon's property); `out` is untouched unless 0. */
TESSERA_API int32_t DM_ORB_Get_Property(const char *name, char *out, unsigned int len);

/* Writes a property through the mapping daemon: the name cut to 320 characters, the value to
 * 1279. Returns 0, 1 (daemon unreachable) or the daemon's status of a refusal. */
TESSERA_API int32_t DM_ORB_Set_Property(const char *name, const char *value);

/* As DM_ORB_Get_Property for a DCSGEN property, but a refusal gives 1. */
TESSERA_API int32_t DM_DCSGEN_Get_Property(const char *name, char *out, unsigned int len);

/* As DM_ORB_Set_Property for a DCSGEN property; the value is cut to 320 characters. */
TESSERA_API int32_t DM_DCSGEN_Set_Property(const char *name, const char *value);

/* Reads a property by legacy path or store key: from the mapping daemon, or, when the daemon
 * doesn't serve it, as Cfgmgr_Get_Property_ori does: `out` holds TESSERA_PROPERTY_VALUE_SIZE
 * bytes. Delivers at most `len` - 1 characters. Returns 0; 1 (daemon unreachable or
 * refused, network record unavailable); 2 (bad argument, store read failed, not readable). */
TESSERA_API int32_t Cfgmgr_Get_Property(const char *name, char *out, unsigned int len);

/* Writes a property by legacy path or store key: through the mapping daemon, or, when the daemon
 * doesn't serve it, as Cfgmgr_Set_Property_ori does. Returns 0; 1 (bad argument, daemon
 * unreachable, store write failed, not writable); or the daemon's or network apply's status. */
TESSERA_API int32_t Cfgmgr_Set_Property(const char *name, const char *value);

/* 1 when the property reads (through Cfgmgr_Get_Property) as exactly `text`, else 0; a property
 * that can't be read gives 0. */
TESSERA_API int32_t is_same_value(const char *name, const char *text);

/* The properties that set_tolvex_default fills in, by legacy path or store key; ends with null. */
TESSERA_API extern const char *const default_list[];

/* Writes every catalogue default that has a legacy path straight to the store, without the daemon
 * and the network record, ignoring the store's answers. Returns 1. */
TESSERA_API int32_t Cfgmgr_Restore_Defaults(void);

/* For each name of default_list that can't be read, prints "<name> not set. Set to default
 * <default>" on standard output and writes the default through Cfgmgr_Set_Property, printing
 * "set <name> failed" when that fails. Returns 0. */
TESSERA_API int32_t set_tolvex_default(void);

/* Flags of the store as 0 or 1; 0 also when the store can't give the flag. */
TESSERA_API int32_t is_tarn_present(void);
TESSERA_API int32_t is_tarn_sd_present(void);
TESSERA_API int32_t is_tarn_sd_enabled(void);
TESSERA_API int32_t is_tarn_sd_write_protected(void);
TESSERA_API int32_t is_vmkey_enabled(void);

/* Splits "address/prefix" at its first '/' into `address` and `prefix` (empty without a '/');
 * both need room for the whole text. Returns 0, or 1 with nothing written for a null argument. */
TESSERA_API int32_t split_ipv6_extended_addr(const char *text, char *address, char *prefix);

/* Turns an extended IPv6 address whose address part is empty or "::" (such as "::/0" or "/64")
 * into "::" in place (`text` needs 3 bytes); leaves any other text as it is. Returns 0, or 1 for
 * a null text. */
TESSERA_API int32_t ipv6_extended_addr_display(char *text);

/* Signals the "gui_event_rp_config_changed" event; returns the store client's answer. */
TESSERA_API int32_t rp_config_changed(void);

/* Counts the power supplies among the active sensors, notes their sensor indexes at the store and
 * stores the count in "pm_int_max_power_supply_index". Returns that last write's result, non-zero
 * for success. */
TESSERA_API int32_t init_power_supply(void);

TESSERA_END_DECLS

#endif /* TESSERA_ORB_CFG_H */
