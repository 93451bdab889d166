// Settings: get, set, defaults restore|fill and the catalogue, and how a setting is read, written
// and checked, which the exports share.
#include <arpa/inet.h>

#include <charconv>
#include <climits>
#include <cstdio>
#include <string>
#include <utility>

#include <tessera/orb_cfg.h>
#include <tessera/strlib.h>

#include "cli.h"

namespace tessera_cli {
namespace {

constexpr CatalogueRow kCatalogue[] = {
#include "catalogue_rows.inc"
};

constexpr const char *kTypeNames[] = {"none",        "reserved", "bool",          "int",
                                      "byte",        "short",    "str",           "str_n",
                                      "addr/prefix", "prefix",   "config_changed"};

// Room for any value: the daemon's (1279 characters) and the store's (1024).
constexpr unsigned kValueSize = 2048;
// The longest text a store read gives back whole.
constexpr std::size_t kStoreTextWidth = 1024;

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

// The row of the network record or of the firmware values that serves `name`, or null.
const SpecialProp *special_row(const std::string &name) {
  const int32_t index = Is_Special_Prop(name.c_str());
  return index >= 0 ? &special_prop_table[index] : nullptr;
}

// Where a read of `name` is served from, in words.
std::string source_of(const std::string &name, Route route) {
  if (route == Route::kDcsgen) {
    return "mapping daemon, DCSGEN";
  }
  if (route == Route::kDaemonFirst && ask_daemon(name) == 0) {
    return "mapping daemon";
  }
  if (const SpecialProp *special = special_row(name); special != nullptr) {
    return special->kind == SPECIAL_PROP_KIND_NETWORK
               ? "network record"
               : "firmware value, served by the mapping daemon only";
  }
  char key[128];
  const int32_t type = convert_prop_name(name.c_str(), key);
  return std::string("store key ") + key + ", " + type_name(type);
}

// The settings whose values are addresses, by legacy path, and the families each takes.
struct Address {
  const char *path;
  bool ipv4;
  bool ipv6;
};
constexpr Address kAddresses[] = {
    {"DNS/server1", true, false},
    {"DNS/server2", true, false},
    {"IPV6/address", false, true},
    {"IPV6/gateway", false, true},
    {"IPV6/link_local_address", false, true},
    {"IPV6/site_local_address", false, true},
    {"IPV6/DNSServer1", false, true},
    {"IPV6/DNSServer2", false, true},
    {"ENFORCED/ipaddr", true, false},
    {"ENFORCED/ipmask", true, false},
    {"SMTP/ipaddr", true, true},
    {"MIR/FIRMWARE/TFTP/ipaddr", true, true},
};
// The network record's text fields that hold names, and their width less the terminator.
constexpr std::pair<const char *, std::size_t> kNetworkNames[] = {{"DNS/mir_name", 254},
                                                                  {"DNS/domain_name", 254}};

// The legacy path of a setting named either way ("" for a store key without one).
std::string legacy_path_of(const std::string &name) {
  if (name.find('/') != std::string::npos) {
    return name;
  }
  for (const auto &row : catalogue_rows()) {
    if (name == row.store_key) {
      return row.legacy_path;
    }
  }
  return "";
}

bool is_ipv6(const std::string &text) {
  in6_addr address{};
  return inet_pton(AF_INET6, text.c_str(), &address) == 1;
}

// Whether `text` is a whole decimal number from `low` to `high`.
bool is_number(const std::string &text, int64_t low, int64_t high) {
  int64_t number = 0;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return !text.empty() && error == std::errc() && stop == end && number >= low && number <= high;
}

int get(const Command &, const Args &args) {
  const Route route = route_of(args);
  const bool verbose = args.has("verbose");
  const bool as_json = args.has("json");
  const bool several = args.positional.size() > 1;
  std::vector<std::string> entries;
  int exit = kOk;
  for (const auto &name : args.positional) {
    const Entry entry = read_entry(name, route);
    if (!entry.error.empty()) {
      exit = fail(name, entry.error);
    }
    if (as_json) {
      entries.push_back(
          entry_json(entry, verbose ? ", \"source\": " + json(source_of(name, route)) : ""));
    } else if (!entry.error.empty()) {
      continue;
    } else if (verbose) {
      std::printf("%s = %s  (%s)\n", name.c_str(),
                  !entry.value.empty() ? entry.value.c_str() : "\"\"",
                  source_of(name, route).c_str());
    } else if (several) {
      std::printf("%s=%s\n", name.c_str(), entry.value.c_str());
    } else {
      std::puts(entry.value.c_str());
    }
  }
  if (as_json) {
    std::printf("%s\n", json_array(entries).c_str());
  }
  return exit;
}

int set(const Command &command, const Args &args) {
  const Route route = route_of(args);
  const auto &name = args.positional[0];
  const auto &value = args.positional[1];
  if (route != Route::kDcsgen && !args.has("raw")) {
    if (const std::string problem = value_problem(name, value); !problem.empty()) {
      return usage_error(command, name + " " + problem);
    }
  }
  const int32_t status = write_setting(name, value, route);
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
  std::vector<std::string> rows;
  for (const auto &row : kCatalogue) {
    if (!row_matches(row, args.positional)) {
      continue;
    }
    const auto dash = [](const char *text) { return text[0] != '\0' ? text : "-"; };
    if (as_json) {
      rows.push_back(
          "{\"legacy_path\": " + json(row.legacy_path) + ", \"store_key\": " + json(row.store_key) +
          ", \"type\": " + json(type_name(row.type)) +
          ", \"type_code\": " + std::to_string(row.type) + ", \"source\": " + json(where_of(row)) +
          ", \"default\": " + json(row.default_value) + "}");
    } else {
      table.add({dash(row.legacy_path), dash(row.store_key), type_name(row.type), where_of(row),
                 dash(row.default_value)});
    }
  }
  if (as_json) {
    std::printf("%s\n", json_array(rows).c_str());
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

bool row_matches(const CatalogueRow &row, const std::vector<std::string> &prefixes) {
  bool wanted = prefixes.empty();
  for (const auto &prefix : prefixes) {
    wanted = wanted || std::string_view(row.legacy_path).starts_with(prefix) ||
             std::string_view(row.store_key).starts_with(prefix);
  }
  return wanted;
}

std::string type_name(int type) {
  return type >= 0 && type <= PROP_TYPE_CONFIG_CHANGED ? kTypeNames[type] : std::to_string(type);
}

int32_t type_of(const std::string &name) {
  char key[128];
  return convert_prop_name(name.c_str(), key);
}

int32_t read_setting(const std::string &name, Route route, std::string &value) {
  char buffer[kValueSize];
  const int32_t status =
      route == Route::kDcsgen   ? DM_DCSGEN_Get_Property(name.c_str(), buffer, sizeof buffer)
      : route == Route::kDirect ? Cfgmgr_Get_Property_ori(name.c_str(), buffer, sizeof buffer)
                                : Cfgmgr_Get_Property(name.c_str(), buffer, sizeof buffer);
  value = status == 0 ? buffer : "";
  return status;
}

int32_t write_setting(const std::string &name, const std::string &value, Route route) {
  return route == Route::kDcsgen   ? DM_DCSGEN_Set_Property(name.c_str(), value.c_str())
         : route == Route::kDirect ? Cfgmgr_Set_Property_ori(name.c_str(), value.c_str())
                                   : Cfgmgr_Set_Property(name.c_str(), value.c_str());
}

Entry read_entry(const std::string &name, Route route) {
  Entry entry{name, route == Route::kDcsgen ? "" : type_name(type_of(name)), "", ""};
  if (const int32_t status = read_setting(name, route, entry.value); status != 0) {
    entry.error = "status " + std::to_string(status) + ": " + read_failure(name, status, route);
  }
  return entry;
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

std::string value_problem(const std::string &name, const std::string &value) {
  const int32_t type = type_of(name);
  const SpecialProp *special = special_row(name);
  const bool network = special != nullptr && special->kind == SPECIAL_PROP_KIND_NETWORK;
  const auto refuse = [&](const std::string &expected) {
    return "takes " + expected + ", not '" + value + "' (--raw writes it as it stands)";
  };
  switch (type) {
    case PROP_TYPE_BOOL:
      return value == "0" || value == "1" ? "" : refuse("0 or 1");
    case PROP_TYPE_INT:
    case PROP_TYPE_BYTE:
    case PROP_TYPE_SHORT: {
      // The store holds 32 bits; the network record a signed byte, a byte or 16 bits.
      using Range = std::pair<int64_t, int64_t>;
      const auto [low, high] = !network                 ? Range{INT32_MIN, INT32_MAX}
                               : type == PROP_TYPE_INT  ? Range{-128, 127}
                               : type == PROP_TYPE_BYTE ? Range{0, 255}
                                                        : Range{0, 65535};
      return is_number(value, low, high) ? ""
                                         : refuse("a decimal number from " + std::to_string(low) +
                                                  " to " + std::to_string(high));
    }
    case PROP_TYPE_NONE:
    case PROP_TYPE_STR:
    case PROP_TYPE_STR_N:
      break;
    default:
      return "";  // never written: the library refuses it whatever the value
  }
  const std::string path = legacy_path_of(name);
  for (const auto &address : kAddresses) {
    if (path == address.path) {
      const bool valid = value.empty() ||
                         (address.ipv4 && StrIsValidIPv4Address(value.c_str()) == 1) ||
                         (address.ipv6 && is_ipv6(value));
      const char *family = !address.ipv6   ? "an IPv4 address"
                           : !address.ipv4 ? "an IPv6 address"
                                           : "an IPv4 or IPv6 address";
      return valid ? "" : refuse(std::string(family) + ", or '' to clear it");
    }
  }
  std::size_t width = kStoreTextWidth;
  for (const auto &[field, field_width] : kNetworkNames) {
    width = path == field ? field_width : width;
  }
  return value.size() <= width
             ? ""
             : "takes a text of at most " + std::to_string(width) + " characters, not one of " +
                   std::to_string(value.size()) + " (--raw writes it as it stands)";
}

bool writable(const std::string &name) {
  const int32_t type = type_of(name);
  const SpecialProp *special = special_row(name);
  return type != PROP_TYPE_RESERVED && type != PROP_TYPE_ADDR_PREFIX && type != PROP_TYPE_PREFIX &&
         type != PROP_TYPE_CONFIG_CHANGED &&
         (special == nullptr || special->kind == SPECIAL_PROP_KIND_NETWORK);
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
       "settings. A name that fails is reported and the others are still read.\n"
       "With --json, a list of {\"name\", \"type\", \"value\"}, or \"error\" in place of the\n"
       "value for a name that can't be read (and \"source\" with --verbose).\n",
       {kDirect,
        kDcsgen,
        {"verbose", 'v', nullptr, "print NAME = VALUE and where it came from"},
        kJsonOption},
       1,
       -1,
       get},
      {"set",
       "[OPTIONS] NAME VALUE",
       "write a setting",
       "Writes a setting by legacy path or store key: through the mapping daemon when it\n"
       "owns the setting, else to the store or, as a change request, to the network record.\n"
       "Prints nothing on success. An empty VALUE is a value.\n"
       "\n"
       "VALUE is checked against the setting's type first, and refused with exit status 2\n"
       "when it doesn't fit: a flag takes 0 or 1; a number a decimal number in the signed\n"
       "32-bit range, or in its field's range for the network record (-128 to 127, 0 to 255,\n"
       "0 to 65535); an address (DNS/server1, IPV6/gateway, SMTP/ipaddr, ...) an IPv4 or\n"
       "IPv6 address as the setting takes, or '' to clear it; a text at most 1024 characters,\n"
       "254 for DNS/mir_name and DNS/domain_name. --raw skips the check.\n",
       {kDirect,
        kDcsgen,
        {"raw", 'r', nullptr, "write VALUE as it stands, as the library alone would"}},
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
