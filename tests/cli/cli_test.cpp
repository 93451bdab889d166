// The tessera program's conventions and the commands that need no controller: help, usage
// errors, exit codes, checks, hex dumps, the catalogue and INI files.
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "run_tessera.h"

namespace tessera::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

// Every command, and every group of commands, which has a help of its own.
constexpr const char *kCommands[] = {
    "get",     "set",     "defaults restore", "defaults fill", "catalogue",      "export",
    "import",  "diff",    "sessions",         "sessions show", "sessions close", "ini show",
    "ini set", "ini del", "nvpair get",       "nvpair names",  "objpath",        "check",
    "hexdump", "batch",   "defaults",         "ini",           "nvpair",         "sim",
};

TEST(Conventions, HelpCoversEveryCommandAndTheExitCodes) {
  Scratch scratch;
  const Outcome help = scratch.tessera({"--help"});
  EXPECT_EQ(help.exit, 0);
  EXPECT_THAT(help.out, HasSubstr("Exit status:\n  0  success"));
  EXPECT_THAT(help.out, HasSubstr("\n  tessera import settings.json  "));
  for (const char *name : kCommands) {
    EXPECT_THAT(help.out, HasSubstr(std::string("\n  ") + name + " ")) << name;
    auto args = words(name);
    args.emplace_back("--help");
    const Outcome command = scratch.tessera(args);
    args.pop_back();
    args.insert(args.begin(), "help");
    EXPECT_EQ(command.exit, 0) << name;
    EXPECT_THAT(command.out, StartsWith(std::string("usage: tessera ") + name)) << name;
    EXPECT_THAT(command.out, HasSubstr("  2  the command line is wrong")) << name;
    EXPECT_EQ(scratch.tessera(args).out, command.out) << name;
  }
  EXPECT_THAT(scratch.tessera({"--version"}).out, StartsWith("tessera 1.2.3 "));
}

TEST(Conventions, UsageErrorsExitWith2AndNameTheProblem) {
  struct Case {
    std::string args;
    const char *message;
  };
  const Case cases[] = {
      {"", "usage: tessera COMMAND"},
      {"frobnicate", "unknown command 'frobnicate'"},
      {"ini", "ini: expected one of: show, set, del"},
      {"get", "tessera get: missing arguments"},
      {"set a b c", "too many arguments"},
      {"get --bogus x", "unknown option --bogus"},
      {"get --verbose=1 x", "option --verbose takes no value"},
      {"sessions --user", "option --user needs a value"},
      {"sessions --type nonsense", "unknown session type 'nonsense'"},
      {"sessions --address 10.1.2", "'10.1.2' is no IPv4 address"},
      {"sessions show x1", "'x1' is no session id"},
      {"sessions close 4294967296", "is no session id"},
      {"check ipv9 1.2.3.4", "unknown check 'ipv9'"},
      {"export --format xml", "unknown format 'xml' (json or ini)"},
      {"diff a b c", "too many arguments"},
      // A value that doesn't fit the setting's type is refused before anything is written.
      {"set WEBSERVER/http_port abc", "http_port takes a decimal number from -2147483648 to"},
      {"set gui_int_http_port 2147483648", "not '2147483648' (--raw writes it as it stands)"},
      {"set SNMP/enable yes", "SNMP/enable takes 0 or 1, not 'yes'"},
      {"set NETWORK/NIC/mtu 70000", "takes a decimal number from 0 to 65535"},
      {"set NETWORK/NIC/100B 128", "takes a decimal number from -128 to 127"},
      {"set DNS/server1 10.1.2", "DNS/server1 takes an IPv4 address, or '' to clear it"},
      {"set IPV6/gateway 10.0.0.1", "takes an IPv6 address"},
      {"set pm_str_email_server_address mail", "takes an IPv4 or IPv6 address"},
      {"set DNS/mir_name " + std::string(255, 'n'), "at most 254 characters, not one of 255"},
  };
  Scratch scratch;
  for (const auto &c : cases) {
    const Outcome run = scratch.tessera(words(c.args));
    EXPECT_EQ(run.exit, 2) << c.args;
    EXPECT_THAT(run.err, HasSubstr(c.message)) << c.args;
    EXPECT_EQ(run.out, "") << c.args;
  }
}

TEST(Conventions, NegativeEmptyAndRawValuesReachTheLibrary) {
  Scratch scratch;
  EXPECT_NE(scratch.tessera({"set", "--direct", "NETWORK/NIC/selection", "-1"}).exit, 2);
  EXPECT_NE(scratch.tessera({"set", "--raw", "WEBSERVER/http_port", "abc"}).exit, 2);
  EXPECT_NE(scratch.tessera({"set", "IPV6/DNSServer2", ""}).exit, 2);
  EXPECT_EQ(scratch.tessera({"check", "--", "email", "-a@b.c"}).exit, 0);
}

TEST(Check, PassesGiveExit0AndFailuresExit3) {
  struct Case {
    const char *kind;
    const char *text;
    int exit;
  };
  const Case cases[] = {
      {"ip", "10.0.0.1", 0}, {"ip", "256.1.1.1", 3}, {"ip", "1.2.3", 3},
      {"domain", "a.b", 0},  {"domain", "a..b", 3},  {"domain", "1.2", 3},
      {"email", "a@b.c", 0}, {"email", "a@b", 3},    {"email", "a b@c.d", 3},
  };
  Scratch scratch;
  for (const auto &c : cases) {
    const Outcome run = scratch.tessera({"check", c.kind, c.text});
    EXPECT_EQ(run.exit, c.exit) << c.kind << " " << c.text;
    EXPECT_THAT(run.out,
                StartsWith(std::string(c.text) + (c.exit == 0 ? ": valid" : ": not valid")));
  }
  const Outcome quiet = scratch.tessera({"check", "-q", "ip", "x"});
  EXPECT_EQ(quiet.exit, 3);
  EXPECT_EQ(quiet.out + quiet.err, "");
}

TEST(Codecs, ListValuesNamesAndObjectPaths) {
  Scratch scratch;
  expect_runs(
      scratch,
      {
          {{"nvpair", "get", "a=1,bc=#EQU#x#CMT#y", "bc"}, 0, "=x,y\n", ""},
          {{"nvpair", "get", "--raw", "a=1,bc=#EQU#x", "bc"}, 0, "#EQU#x\n", ""},
          {{"nvpair", "get", "a=1", "z"},
           3,
           "",
           "tessera: z: status 4: no such name in the list\n"},
          {{"nvpair", "get", "a,b=1", "b"}, 1, "", "tessera: b: status 1: the list is malformed"},
          {{"nvpair", "names", "a\\,b=1,c=2,"}, 0, "a,b\nc\n", ""},
          {{"objpath", "//h/root/x:C.K=1,L=a b"},
           0,
           "host:       //h\nnamespace:  root/x\nclass:      C\nkey:        K=1\nkey:        L=a "
           "b\n",
           ""},
          {{"objpath", "--json", "C.K=1"},
           0,
           "{\"host\": \"\", \"namespace\": \"root/cimv2\", \"class\": \"C\", \"keys\": "
           "[{\"name\": \"K\", \"value\": \"1\"}]}\n",
           ""},
          {{"objpath", "C.K=1,L=2", "L"}, 0, "2\n", ""},
          {{"objpath", "C.K=1", "k"}, 3, "", "tessera: C.K=1: no key property k\n"},
          {{"objpath", "C.A B=1"}, 1, "", "tessera: C.A B=1: status 4: not an object path"},
      });
}

TEST(Hexdump, PrintsTheTraceLogDumpOfAFileOrStandardInput) {
  Scratch scratch;
  const std::string path = scratch.write("hello.bin", "Hello\x1f\x7f");
  const Outcome file = scratch.tessera({"hexdump", path});
  EXPECT_EQ(file.exit, 0);
  EXPECT_THAT(file.out, StartsWith(path + "             Starting Address: 0x"));
  EXPECT_THAT(file.out, HasSubstr("Length: 7(0x07)\n"));
  EXPECT_THAT(file.out, HasSubstr("  48 65 6C 6C 6F 1F 7F __-__ __ __ __ __ __ __ __|Hello.. -"));
  const Outcome input = scratch.tessera({"hexdump", "-"}, std::string(17, 'x'));
  EXPECT_THAT(input.out, StartsWith("standard input             Starting Address"));
  EXPECT_THAT(input.out, HasSubstr("  78 __ __ __ __ __ __ __-__ __ __ __ __ __ __ __|x       -"));
  const Outcome missing = scratch.tessera({"hexdump", "nothing.bin"});
  EXPECT_EQ(missing.exit, 1);
  EXPECT_EQ(missing.err, "tessera: nothing.bin: No such file or directory\n");
}

TEST(Catalogue, ListsRowsByPrefixWithTypeSourceAndDefault) {
  Scratch scratch;
  const Outcome all = scratch.tessera({"catalogue"});
  EXPECT_EQ(all.exit, 0);
  EXPECT_EQ(std::count(all.out.begin(), all.out.end(), '\n'), 288);  // header and 287 rows
  const Outcome some = scratch.tessera(
      {"catalogue", "WEBSERVER/http_", "DNS/server1", "MIR/FIRMWARE/v", "SERIAL/escape"});
  EXPECT_EQ(some.out,
            "LEGACY PATH           STORE KEY                TYPE  SOURCE    DEFAULT\n"
            "WEBSERVER/http_port   gui_int_http_port        int   store     80\n"
            "MIR/FIRMWARE/version  -                        str   firmware  1.00\n"
            "DNS/server1           -                        str   network   -\n"
            "SERIAL/escape_key     ser_str_console_quitkey  str   store     ^\\\n");
  const Outcome json = scratch.tessera({"catalogue", "--json", "gui_int_http_"});
  EXPECT_EQ(
      json.out,
      "[\n  {\"legacy_path\": \"WEBSERVER/http_port\", \"store_key\": \"gui_int_http_port\", "
      "\"type\": \"int\", \"type_code\": 3, \"source\": \"store\", \"default\": \"80\"}\n]\n");
  EXPECT_EQ(scratch.tessera({"catalogue", "--json", "nothing"}).out, "[]\n");
}

TEST(Ini, SetCreatesShowReadsAndDelRemovesInTheNormalForm) {
  Scratch scratch;
  const std::string path = scratch.write(
      "app.ini", "; settings\nloose=1\n[net]\n  port = 80 \n# comment\nhost=a;b\n\n[empty]\n");
  chmod(path.c_str(), 0640);
  EXPECT_EQ(scratch.tessera({"ini", "show", path}).out, "[net]\nport=80\nhost=a\n\n[empty]\n");
  const Outcome set = scratch.tessera({"ini", "set", path, "net", "port", "8080"});
  EXPECT_EQ(set.exit, 0);
  EXPECT_EQ(set.out + set.err, "");
  EXPECT_EQ(scratch.tessera({"ini", "set", path, "new", "k", "v=w"}).exit, 0);
  EXPECT_EQ(scratch.read("app.ini"), "[net]\nport=8080\nhost=a\n\n[empty]\n\n[new]\nk=v=w\n");
  struct stat info {};
  stat(path.c_str(), &info);
  EXPECT_EQ(info.st_mode & 0777, 0640U);
  EXPECT_EQ(scratch.tessera({"ini", "show", path, "net"}).out, "port=8080\nhost=a\n");
  EXPECT_EQ(scratch.tessera({"ini", "show", path, "new", "k"}).out, "v=w\n");
  EXPECT_EQ(scratch.tessera({"ini", "show", "--json", path, "net", "port"}).out,
            "{\"name\": \"port\", \"value\": \"8080\", \"line\": 2}\n");
  EXPECT_EQ(scratch.tessera({"ini", "del", path, "net", "host"}).exit, 0);
  EXPECT_EQ(scratch.tessera({"ini", "show", "--json", path, "net"}).out,
            "{\"name\": \"net\", \"line\": 1, \"keys\": [{\"name\": \"port\", \"value\": "
            "\"8080\", \"line\": 2}]}\n");
  EXPECT_EQ(scratch.tessera({"ini", "set", scratch.file("fresh.ini"), "a", "b", ""}).exit, 0);
  EXPECT_EQ(scratch.read("fresh.ini"), "[a]\nb=\n");
}

TEST(Ini, MissingEntriesExit3AndFailuresExit1WithTheStatus) {
  Scratch scratch;
  const std::string path = scratch.write("a.ini", "[s]\nk=v\n");
  expect_runs(
      scratch,
      {
          {{"show", path, "t"}, 3, "", path + ": no section [t]"},
          {{"show", path, "s", "x"}, 3, "", path + ": no key x in section [s]"},
          {{"del", path, "s", "x"}, 3, "", path + ": no key x in section [s]"},
          {{"show", "none.ini"},
           1,
           "",
           "none.ini: status 1: the file can't be read: No such file or directory"},
          {{"show", std::string(257, 'p')}, 1, "", "status 1: path longer than 256 characters"},
          {{"set", path, std::string(256, 's'), "k", "v"},
           1,
           "",
           "status 8: section name longer than 255 characters"},
          {{"set", path, "s", "k", std::string(1024, 'v')},
           1,
           "",
           "value longer than 1023 characters"},
          {{"set", scratch.file("no/dir.ini"), "s", "k", "v"},
           1,
           "",
           "can't write beside the file"},
          {{"show", scratch.path()}, 1, "", "Is a directory"},
      },
      {"ini"});
  EXPECT_EQ(scratch.read("a.ini"), "[s]\nk=v\n");
}

// Two forms of one export: JSON with escapes, and INI with the quoting its parser needs.
constexpr const char *kJsonExport =
    "{\"format\": \"tessera export\", \"version\": 1, \"settings\": [\n"
    "  {\"name\": \"A/text\", \"type\": \"str\", \"value\": \" x;\\ty \\\"q\\\" \\\\ "
    "\\u00e9\\ud83d\\ude00\"},\n"
    "  {\"name\": \"A/flag\", \"value\": \"1\"},\n"
    "  {\"name\": \"A/gone\", \"type\": \"int\", \"error\": \"status 2: unreadable\"}]}";
constexpr const char *kIniExport =
    "[tessera export]\nversion=1\n\n[A/text]\ntype=str\nvalue=\" x\\x3b\\ty \\\"q\\\" \\\\ "
    "\xc3\xa9\xf0\x9f\x98\x80\"\n\n[A/flag]\nvalue=\"1\"\n\n[A/gone]\ntype=int\nerror=unreadable\n";

TEST(Backup, DiffComparesExportsInEitherForm) {
  Scratch scratch;
  const std::string json = scratch.write("a.json", kJsonExport);
  const std::string ini = scratch.write("a.ini", kIniExport);
  std::string changed = kIniExport;
  changed.replace(changed.find("value=\"1\""), 9, "value=0");
  changed.replace(changed.find("\n[A/gone]"), std::string::npos, "\n[B/new]\nvalue=\n");
  const std::string other = scratch.write("b.ini", changed);
  expect_runs(
      scratch,
      {
          {{json, ini}, 0, "", ""},
          {{json, other},
           3,
           "A/flag: \"1\" -> \"0\"\nA/gone: (unreadable) -> (absent)\nB/new: (absent) -> \"\"\n",
           ""},
          {{scratch.write("c.json", "{\"format\": \"tessera export\", \"version\": 2}"), ini},
           1,
           "",
           "c.json: an export of another version than 1\n"},
          {{scratch.write("d.json", "{\"settings\": [}"), ini}, 1, "", "d.json: not JSON: a value"},
          {{json, scratch.write("e.ini", "[s]\nk=v\n")}, 1, "", "e.ini: not a tessera export"},
      },
      {"diff"});
}

TEST(Batch, RunsLinesInOrderAndStopsAtTheFirstFailureUnlessToldToGoOn) {
  Scratch scratch;
  const std::string lines =
      "# checks\n\ncheck ip 10.0.0.1\ntessera check -q domain 'a.b' # a comment\n"
      "check email \"a b@c.d\"\ncheck ip a\\ b\ncheck ip 'unclosed\n";
  const Outcome stop = scratch.tessera({"batch", scratch.write("lines", lines)});
  EXPECT_EQ(stop.exit, 3);
  EXPECT_EQ(stop.out, "10.0.0.1: valid as an IPv4 address\na b@c.d: not valid as a mail address\n");
  EXPECT_EQ(stop.err, "tessera: " + scratch.file("lines") +
                          ":5: exit status 3; the lines after it are not run\n");
  const Outcome all = scratch.tessera({"batch", "--keep-going"}, lines);
  EXPECT_EQ(all.exit, 3);
  EXPECT_THAT(all.out, HasSubstr("\na b: not valid as an IPv4 address\n"));
  EXPECT_EQ(all.err,
            "tessera: standard input:5: exit status 3\n"
            "tessera: standard input:6: exit status 3\n"
            "tessera: standard input:7: a quote isn't closed\n"
            "tessera: standard input:7: exit status 2\n");
  EXPECT_EQ(scratch.tessera({"batch"}, "sim shell ls\n").exit, 2);
}

// Bash completes through tessera's completion, loaded by bash-completion from where the build
// installs it under the prefix's data directory.
TEST(Completion, OffersCommandsOptionsSettingsAndIniNames) {
  if (access("/usr/share/bash-completion/bash_completion", R_OK) != 0) {
    GTEST_SKIP() << "bash-completion isn't installed (tools/bootstrap installs it)";
  }
  Scratch scratch;
  scratch.write("app.ini", "[net]\nport=80\nhost=a\n\n[alerts]\nmail=x\n");
  std::string program;
  for (const auto &word : tessera_program()) {
    program += " '" + word + "'";
  }
  std::filesystem::create_directories(scratch.file("bin"));
  std::filesystem::create_directories(scratch.file("share/bash-completion/completions"));
  chmod(scratch.write("bin/tessera", "#!/bin/sh\nexec" + program + " \"$@\"\n").c_str(), 0755);
  scratch.write("share/bash-completion/completions/tessera", read_file(TESSERA_CLI_COMPLETION));
  struct Case {
    const char *line;  // what was typed, the cursor at its end
    const char *reply;
  };
  const Case cases[] = {
      {"tessera ",
       "--help --version batch catalogue check defaults diff export get help hexdump import ini "
       "nvpair objpath sessions set sim"},
      {"tessera get WEBSERVER/h", "WEBSERVER/http_port WEBSERVER/https_port"},
      {"tessera get -v gui_int_s", "gui_int_session_count gui_int_session_timeout"},
      {"tessera set SNMP/enable ", "0 1"},
      {"tessera sessions ", "close show"},
      {"tessera sessions --t", "--type"},
      {"tessera export --format ", "ini json"},
      {"tessera ini show app.ini ", "alerts net"},
      {"tessera ini del app.ini net ", "host port"},
      {"tessera import ap", "app.ini"},
      {"tessera help ini s", "set show"},
      {"tessera check e", "email"},
  };
  std::string script =
      "export PATH=\"$PWD/bin:$PATH\" XDG_DATA_DIRS=\"$PWD/share\"\n"
      ". /usr/share/bash-completion/bash_completion\n__load_completion tessera\n"
      "complete() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); _tessera; "
      "echo ${COMPREPLY[*]}; }\n";
  for (const auto &c : cases) {
    script += "complete";
    for (const auto &word : words(c.line)) {
      script += " '" + word + "'";
    }
    script += std::string(c.line).ends_with(" ") ? " ''\n" : "\n";
  }
  const Outcome run = scratch.run({"bash", "-c", script});
  std::string expected;
  for (const auto &c : cases) {
    expected += std::string(c.reply) + "\n";
  }
  EXPECT_EQ(run.out, expected);
  EXPECT_EQ(run.err, "");
}

}  // namespace
}  // namespace tessera::test
