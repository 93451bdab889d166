/* Linkage of the libtessera interface: C names, exported from libtessera.so.1. */
#ifndef TESSERA_EXPORT_H
#define TESSERA_EXPORT_H

#if defined(__GNUC__) || defined(__clang__)
#define TESSERA_API __attribute__((visibility("default")))
#define TESSERA_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define TESSERA_API
#define TESSERA_PRINTF(fmt, args)
#endif

#ifdef __cplusplus
#define TESSERA_BEGIN_DECLS extern "C" {
#define TESSERA_END_DECLS }
#else
#define TESSERA_BEGIN_DECLS
#define TESSERA_END_DECLS
#endif

#endif /* TESSERA_EXPORT_H */
