// Management sessions: list under filters, show one, close one.
#include <strings.h>

#include <cstdio>
#include <string>

#include <tessera/session.h>
#include <tessera/strlib.h>

#include "cli.h"

namespace tessera_cli {
namespace {

struct Session {
  uint32_t id = 0;
  char user[SSN_USER_SIZE] = {};
  uint32_t address = 0;
  char address_text[SSN_ADDRESS_TEXT_SIZE] = {};
  uint8_t type = 0;
  uint32_t has_vkvm = 0;
  uint32_t has_vmedia = 0;
  uint32_t privilege = 0;
  uint32_t word = 0;

  [[nodiscard]] std::string label() const {
    return type < SSN_TYPE_COUNT ? SsnTypeString[type] : SsnTypeString[SSN_TYPE_UNKNOWN];
  }
  [[nodiscard]] std::string where() const { return address_text[0] != '\0' ? address_text : "-"; }
  [[nodiscard]] std::vector<std::string> children() const {
    std::vector<std::string> kinds;
    if (has_vkvm != 0) {
      kinds.emplace_back("vKVM");
    }
    if (has_vmedia != 0) {
      kinds.emplace_back("vMedia");
    }
    return kinds;
  }
};

// Reads a session's details; 0 or the library's status (SSN_ERR_NO_SESSION).
int32_t read_session(uint32_t id, Session &session) {
  uint32_t one = 0;
  uint32_t zero = 0;
  uint32_t limit = 0;
  uint32_t zero2 = 0;
  session.id = id;
  return ssn_entry_getinfo(id, session.user, &one, &session.address, session.address_text,
                           &session.type, &zero, &session.has_vkvm, &session.has_vmedia,
                           &session.privilege, &session.word, &limit, &zero2);
}

std::string json_list(const std::vector<std::string> &items) {
  std::string out = "[";
  for (const auto &item : items) {
    out += (out.size() > 1 ? ", " : "") + json(item);
  }
  return out + "]";
}

std::string to_json(const Session &s) {
  return "{\"id\": " + std::to_string(s.id) + ", \"type\": " + json(s.label()) +
         ", \"type_code\": " + std::to_string(s.type) + ", \"user\": " + json(s.user) +
         ", \"address\": " + json(s.address_text) +
         ", \"privilege\": " + std::to_string(s.privilege) +
         ", \"children\": " + json_list(s.children()) + ", \"word\": " + std::to_string(s.word) +
         "}";
}

// A session type as a code, keyword ("webgui") or label ("GUI", any case); false if none.
bool parse_type(const std::string &text, uint32_t &type) {
  if (parse_u32(text, type)) {
    return type < SSN_TYPE_COUNT;
  }
  type = str2ssntype(text.c_str());
  for (uint32_t code = 1; type == 0 && code < SSN_TYPE_COUNT; ++code) {
    if (strcasecmp(text.c_str(), SsnTypeString[code]) == 0) {
      type = code;
    }
  }
  return type != 0;
}

std::string type_choices() {
  std::string choices;
  for (uint32_t code = 1; code < SSN_TYPE_COUNT; ++code) {
    choices += std::string(code > 1 ? ", " : "") + SsnTypeString[code];
  }
  return choices;
}

int list(const Command &command, const Args &args) {
  uint32_t type = 0;
  if (args.has("type") && !parse_type(args.get("type"), type)) {
    return usage_error(command, "unknown session type '" + args.get("type") + "' (one of " +
                                    type_choices() + ", or their keywords or codes)");
  }
  uint32_t address = 0;
  if (args.has("address")) {
    if (StrIsValidIPv4Address(args.get("address").c_str()) != 1) {
      return usage_error(command, "'" + args.get("address") + "' is no IPv4 address");
    }
    address = ssn_atoip(args.get("address").c_str());
  }
  const std::string user = args.get("user");
  uint32_t ids[SSN_MAX_IDS];
  uint32_t count = 0;
  const int32_t status =
      ssn_entry_list(args.has("user") ? user.c_str() : nullptr, type, address, ids, &count);
  if (status != 0) {
    return fail_status("sessions", status, "the store can't list the sessions");
  }
  const bool as_json = args.has("json");
  Table table({"ID", "TYPE", "USER", "ADDRESS", "PRIVILEGE", "CHILDREN"});
  std::vector<std::string> rows;
  for (uint32_t i = 0; i < count; ++i) {
    Session s;
    if (read_session(ids[i], s) != 0) {
      continue;  // ended since it was listed
    }
    std::string children;
    for (const auto &kind : s.children()) {
      children += (children.empty() ? "" : ",") + kind;
    }
    table.add({std::to_string(s.id), s.label(), s.user[0] != '\0' ? s.user : "-", s.where(),
               std::to_string(s.privilege), children.empty() ? "-" : children});
    rows.push_back(to_json(s));
  }
  if (as_json) {
    std::printf("%s\n", json_array(rows).c_str());
  } else {
    table.print();
  }
  return kOk;
}

// The session named by the command's one argument, read; kOk or the exit code of the failure.
int find_session(const Command &command, const Args &args, Session &session) {
  uint32_t id = 0;
  if (!parse_u32(args.positional[0], id)) {
    return usage_error(command, "'" + args.positional[0] + "' is no session id");
  }
  const int32_t status = read_session(id, session);
  if (status == SSN_ERR_NO_SESSION) {
    fail_status("session " + args.positional[0], status, "no such session at the store");
    return kNo;
  }
  return status == 0 ? kOk : fail_status("session " + args.positional[0], status, "unreadable");
}

int show(const Command &command, const Args &args) {
  Session s;
  if (const int exit = find_session(command, args, s); exit != kOk) {
    return exit;
  }
  if (args.has("json")) {
    std::printf("%s\n", to_json(s).c_str());
    return kOk;
  }
  char dotted[SSN_IP_TEXT_SIZE];
  std::printf("id:               %u\n", s.id);
  std::printf("type:             %s (%u)\n", s.label().c_str(), s.type);
  std::printf("user:             %s\n", s.user);
  std::printf("address:          %s\n", s.where().c_str());
  std::printf("IPv4 address:     %s (0x%08X)\n",
              s.address != 0 ? ssn_iptostr(dotted, s.address) : "none", s.address);
  std::printf("privilege:        %u\n", s.privilege);
  std::printf("virtual console:  %s\n", s.has_vkvm != 0 ? "yes" : "no");
  std::printf("virtual media:    %s\n", s.has_vmedia != 0 ? "yes" : "no");
  std::printf("session word:     0x%08X\n", s.word);
  return kOk;
}

int close(const Command &command, const Args &args) {
  Session s;
  if (const int exit = find_session(command, args, s); exit != kOk) {
    return exit;
  }
  const int32_t status = args.has("orb") ? ssn_orb_close(s.id) : ssn_close(s.id);
  if (status == SSN_ERR_NO_DAEMON) {
    return fail_status("session " + args.positional[0], status,
                       "the session daemon can't be reached (is the controller, or `tessera sim "
                       "start`, running?)");
  }
  return status == 0 ? kOk : fail_status("session " + args.positional[0], status, "out of memory");
}

}  // namespace

std::vector<Command> session_commands() {
  return {
      {"sessions",
       "[OPTIONS]",
       "list management sessions",
       "Lists the controller's management sessions that match every filter given, with id,\n"
       "type, user, address, the user's privilege, and the kinds of child sessions\n"
       "(virtual console, virtual media) each has.\n",
       {{"user", 'u', "NAME", "only sessions of this user (exact, case-sensitive)"},
        {"type", 't', "TYPE", "only sessions of this type: SSH, GUI, webgui, 3, ..."},
        {"address", 'a', "IPV4", "only sessions from this IPv4 address"},
        kJsonOption},
       0,
       0,
       list},
      {"sessions show",
       "[OPTIONS] ID",
       "show one session's details",
       "Shows one session: type, user, address, privilege, child sessions and the store's\n"
       "session word. Exit status 3 when the store has no such session.\n",
       {kJsonOption},
       1,
       1,
       show},
      {"sessions close",
       "[OPTIONS] ID",
       "ask the session daemon to close a session",
       "Asks the session daemon to close the session. Prints nothing on success. Exit status\n"
       "3 when the store has no such session.\n",
       {{"orb", 0, nullptr, "mark the request as a close of the store's own session"}},
       1,
       1,
       close},
  };
}

}  // namespace tessera_cli
