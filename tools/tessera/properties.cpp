// Settings: get, set, defaults restore|fill and the catalogue.
#include <cstdio>
#include <string>

#include <tessera/orb_cfg.h>

#include "cli.h"

namespace tessera_cli {
namespace {

constexpr CatalogueRow kCatalogue[] = {
#include "catalogue_rows.inc"
};

constexpr const char *kTypeNames[] = {"none",        "reserved", "bool",          "int",
                                      "byte",        "short",    "str",           "str_n",
                                      "addr/prefix", "prefix",   "config_changed"};

std::string type_name(int type) {
  return type >= 0 && type <= PROP_TYPE_CONFIG_CHANGED ? kTypeNames[type] : std::to_string(type);
}

// Room for any value: the daemon's (1279 characters) and the store's (1024).
constexpr unsigned kValueSize = 2048;

enum class Route { kDaemonFirst, kDirect, kDcsgen };

Route route_of(const Args &args) {
  return args.has("dcsgen")   ? Route::kDcsgen
         : args.has("direct") ? Route::kDirect
                              : Route::kDaemonFirst;
}

// What the mapping daemon answers for a read of `name`: 0 (it serves it), 4 (not its own),
// 1 (unreachable) or its status of a refusal.
int32_t ask_daemon(const std::string &name) {
  char value[kValueSize];
  return DM_ORB_Get_Property(name.c_str(), value, sizeof value);
}

constexpr const char *kNoDaemon =
    "the mapping daemon can't be reached (is the controller, or `tessera sim start`, running?)";

// Where a read of `name` is served from, in words.
std::string source_of(const std::string &name, Route route) {
  if (route == Route::kDcsgen) {
    return "mapping daemon, DCSGEN";
  }
  if (route == Route::kDaemonFirst && ask_daemon(name) == 0) {
    return "mapping daemon";
  }
  const int32_t special = Is_Special_Prop(name.c_str());
  if (special >= 0) {
    return special_prop_table[special].kind == SPECIAL_PROP_KIND_NETWORK
               ? "network record"
               : "firmware value, served by the mapping daemon only";
  }
  char key[128];
  const int32_t type = convert_prop_name(name.c_str(), key);
  return std::string("store key ") + key + ", " + type_name(type);
}

std::string read_failure(const std::string &name, int32_t status, Route route) {
  if (route == Route::kDcsgen) {
    return "the mapping daemon can't be reached or has no such DCSGEN property";
  }
  if (status == 2) {
    return "nothing to read: an empty name, no value under that name at the store, or a type "
           "that can't be read";
  }
  if (route == Route::kDaemonFirst) {
    const int32_t daemon = ask_daemon(name);
    if (daemon == 1) {
      return kNoDaemon;
    }
    if (daemon != 0 && daemon != 4) {
      return "the mapping daemon refused the read with status " + std::to_string(daemon);
    }
  }
  return "the network record can't be fetched from the store, or the name is no network field";
}

std::string write_failure(const std::string &name, int32_t status, Route route) {
  const int32_t daemon = route == Route::kDirect ? 4 : ask_daemon(name);
  if (daemon == 1) {
    return kNoDaemon;
  }
  if (route == Route::kDcsgen || daemon == 0) {
    return "the mapping daemon refused the value";
  }
  if (status == 1) {
    return "the store refused the value, or the property can't be written (an empty name, a "
           "firmware value, an address with prefix, a change marker, a text too long for its "
           "network field)";
  }
  return "the network configuration refused the change";
}

int get(const Command &, const Args &args) {
  const Route route = route_of(args);
  const bool verbose = args.has("verbose");
  const bool several = args.positional.size() > 1;
  int exit = kOk;
  for (const auto &name : args.positional) {
    char value[kValueSize];
    const int32_t status =
        route == Route::kDcsgen   ? DM_DCSGEN_Get_Property(name.c_str(), value, sizeof value)
        : route == Route::kDirect ? Cfgmgr_Get_Property_ori(name.c_str(), value, sizeof value)
                                  : Cfgmgr_Get_Property(name.c_str(), value, sizeof value);
    if (status != 0) {
      exit = fail_status(name, status, read_failure(name, status, route));
    } else if (verbose) {
      std::printf("%s = %s  (%s)\n", name.c_str(), value[0] != '\0' ? value : "\"\"",
                  source_of(name, route).c_str());
    } else if (several) {
      std::printf("%s=%s\n", name.c_str(), value);
    } else {
      std::puts(value);
    }
  }
  return exit;
}

int set(const Command &, const Args &args) {
  const Route route = route_of(args);
  const auto &name = args.positional[0];
  const char *value = args.positional[1].c_str();
  const int32_t status = route == Route::kDcsgen   ? DM_DCSGEN_Set_Property(name.c_str(), value)
                         : route == Route::kDirect ? Cfgmgr_Set_Property_ori(name.c_str(), value)
                                                   : Cfgmgr_Set_Property(name.c_str(), value);
  return status == 0 ? kOk : fail_status(name, status, write_failure(name, status, route));
}

int restore_defaults(const Command &, const Args &) {
  Cfgmgr_Restore_Defaults();  // always 1: the store's answers are not looked at
  return kOk;
}

int fill_defaults(const Command &, const Args &) {
  set_tolvex_default();  // prints what it sets, and each write that fails
  return kOk;
}

std::string where_of(const CatalogueRow &row) {
  const int32_t special = row.legacy_path[0] != '\0' ? Is_Special_Prop(row.legacy_path) : -1;
  return special < 0                                                     ? "store"
         : special_prop_table[special].kind == SPECIAL_PROP_KIND_NETWORK ? "network"
                                                                         : "firmware";
}

int catalogue(const Command &, const Args &args) {
  const bool as_json = args.has("json");
  Table table({"LEGACY PATH", "STORE KEY", "TYPE", "SOURCE", "DEFAULT"});
  std::string rows;
  for (const auto &row : kCatalogue) {
    bool wanted = args.positional.empty();
    for (const auto &prefix : args.positional) {
      wanted = wanted || std::string_view(row.legacy_path).starts_with(prefix) ||
               std::string_view(row.store_key).starts_with(prefix);
    }
    if (!wanted) {
      continue;
    }
    const auto dash = [](const char *text) { return text[0] != '\0' ? text : "-"; };
    if (as_json) {
      rows +=
          std::string(rows.empty() ? "" : ",\n") + "  {\"legacy_path\": " + json(row.legacy_path) +
          ", \"store_key\": " + json(row.store_key) + ", \"type\": " + json(type_name(row.type)) +
          ", \"type_code\": " + std::to_string(row.type) + ", \"source\": " + json(where_of(row)) +
          ", \"default\": " + json(row.default_value) + "}";
    } else {
      table.add({dash(row.legacy_path), dash(row.store_key), type_name(row.type), where_of(row),
                 dash(row.default_value)});
    }
  }
  if (as_json) {
    std::printf("[%s%s%s]\n", rows.empty() ? "" : "\n", rows.c_str(), rows.empty() ? "" : "\n");
  } else {
    table.print();
  }
  return kOk;
}

const Option kDirect{"direct", 'd', nullptr,
                     "skip the mapping daemon: go to the store or the network record"};
const Option kDcsgen{"dcsgen", 0, nullptr, "use the mapping daemon's DCSGEN properties"};

}  // namespace

std::span<const CatalogueRow> catalogue_rows() {
  return kCatalogue;
}

std::vector<Command> property_commands() {
  return {
      {"get",
       "[OPTIONS] NAME...",
       "read settings by legacy path or store key",
       "Reads each setting, by legacy path (WEBSERVER/http_port) or store key\n"
       "(gui_int_http_port), and prints its value: alone for one name, as NAME=VALUE for\n"
       "several. The mapping daemon is asked first; for a setting that isn't its own the\n"
       "value comes from the store, or from the network record for DNS, NIC and IPv6\n"
       "settings. A name that fails is reported and the others are still read.\n",
       {kDirect, kDcsgen, {"verbose", 'v', nullptr, "print NAME = VALUE and where it came from"}},
       1,
       -1,
       get},
      {"set",
       "[OPTIONS] NAME VALUE",
       "write a setting",
       "Writes a setting by legacy path or store key: through the mapping daemon when it\n"
       "owns the setting, else to the store or, as a change request, to the network record.\n"
       "Prints nothing on success. An empty VALUE is a value.\n",
       {kDirect, kDcsgen},
       2,
       2,
       set},
      {"defaults restore",
       "",
       "write every catalogue default to the store",
       "Writes the default of every catalogue row that has a legacy path straight to the\n"
       "store, without the daemon and the network record. Prints nothing.\n",
       {},
       0,
       0,
       restore_defaults},
      {"defaults fill",
       "",
       "set the standard settings that can't be read",
       "Reads each setting of the library's default list and writes its default where it\n"
       "can't be read, printing a line for each one set and for each write that fails.\n",
       {},
       0,
       0,
       fill_defaults},
      {"catalogue",
       "[OPTIONS] [PREFIX...]",
       "list the settings the library knows",
       "Lists the property catalogue in lookup order: legacy path, store key, type, where\n"
       "the value lives (store, network record or firmware) and default. With PREFIX,\n"
       "only rows whose legacy path or store key starts with one of them.\n",
       {kJsonOption},
       0,
       -1,
       catalogue},
  };
}

}  // namespace tessera_cli
