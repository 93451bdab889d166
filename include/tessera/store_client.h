/*
 * The platform components that libtessera.so.1 imports and never defines: the store client
 * (orb_*), the diagnostics sink (velaprintf, os_info) and the program starter used as execve.
 * On the controller the real components provide them; on a workstation, the kit's libraries.
 * This header is the contract for anyone who provides them.
 */
#ifndef TESSERA_STORE_CLIENT_H
#define TESSERA_STORE_CLIENT_H

#include <stdint.h>

#include "tessera/export.h"

TESSERA_BEGIN_DECLS

/* Store client. orb_config_* and orb_session_get_info give non-zero for success;
 * orb_session_get_children_info, orb_session_get_type_info and orb_function_execute give 0. */
int32_t orb_config_get_bool(const char *key, uint8_t *value);
int32_t orb_config_get_int(const char *key, int32_t *value);
int32_t orb_config_get_str(const char *key, char *value);
int32_t orb_config_get_str_n(const char *key, char *value, uint32_t capacity);
int32_t orb_config_set_bool(const char *key, int32_t value, int32_t flag);
int32_t orb_config_set_int(const char *key, int32_t value, int32_t flag);
int32_t orb_config_set_str(const char *key, const char *value, int32_t flag);
int32_t orb_config_set_str_n(const char *key, const char *value, int32_t flag);
int32_t orb_session_get_info(uint32_t id, void *record);
int32_t orb_session_get_children_info(uint32_t id, int32_t *count, uint32_t *ids);
int32_t orb_session_get_type_info(const char *type, int32_t *count, uint32_t *ids);
int32_t orb_function_execute(const char *name, uint32_t *length, const void *input,
                             uint32_t capacity, void *output);
int32_t orb_event_occurred(const char *name, int32_t arg1, int32_t arg2);

/* Diagnostics sink. */
int32_t velaprintf(int32_t level, int32_t facility, const char *format, ...) TESSERA_PRINTF(3, 4);
int32_t os_info(const char *format, ...) TESSERA_PRINTF(1, 2);

/* Program starter with the arguments and result of execve. */
int32_t tattletale_standin1_execve(const char *path, char *const argv[], char *const envp[]);

TESSERA_END_DECLS

#endif /* TESSERA_STORE_CLIENT_H */
