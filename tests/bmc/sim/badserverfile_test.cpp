// Every message about a server file, word for word.
#include "tests/support/bmclanguage.h"
#include "tests/support/namespaces.h"

namespace tests {

namespace {

struct TBadServer {
  std::string text;
  std::string message;
};

void PrintTo(const TBadServer& bad, std::ostream* out) { *out << bad.text; }

class BadServerFile : public testing::TestWithParam<TBadServer> {};

TEST_P(BadServerFile, IsRefusedWithPlaceAndReason) {
  const std::string message = MessageOf([] { ServerFrom(GetParam().text); });
  EXPECT_EQ(message, GetParam().message);
}

const std::string kType = "machine_type = \"\"\n";
const std::string kFault = kType + "[[fault]]\n";

INSTANTIATE_TEST_SUITE_P(
    All, BadServerFile,
    testing::Values(
        TBadServer{
            "",
            "server.toml:1:1: error: found no \"machine_type\", expected the machine type of the server, such as "
            "machine_type = \"6203\"\n"},
        TBadServer{"machine_type = 6203",
                   "server.toml:1:16: error: found an integer for \"machine_type\", expected a string\n"
                   "  machine_type = 6203\n"
                   "                 ^\n"},
        TBadServer{"machin_type = \"6203\"",
                   "server.toml:1:1: error: found the unknown key \"machin_type\", expected one of machine_type, "
                   "local_time, unlisted_registers, ipmi, dot, bmc_node, fault; did you mean \"machine_type\"?\n"
                   "  machin_type = \"6203\"\n"
                   "  ^\n"},
        TBadServer{
            kType + "colour = 1",
            "server.toml:2:1: error: found the unknown key \"colour\", expected one of machine_type, local_time, "
            "unlisted_registers, ipmi, dot, bmc_node, fault\n"
            "  colour = 1\n"
            "  ^\n"},
        TBadServer{
            kType + "[ipmi]\ndriver = true",
            "server.toml:3:1: error: found the unknown key \"driver\", expected one of driver_present; did you mean "
            "\"driver_present\"?\n"
            "  driver = true\n"
            "  ^\n"},
        TBadServer{kType + "ipmi = { driver_present = 1 }",
                   "server.toml:2:27: error: found an integer for \"driver_present\", expected true or false\n"
                   "  ipmi = { driver_present = 1 }\n"
                   "                            ^\n"},
        TBadServer{kType + "ipmi = 5",
                   "server.toml:2:8: error: found an integer, expected a [ipmi] table\n"
                   "  ipmi = 5\n"
                   "         ^\n"},
        TBadServer{
            kType + "unlisted_registers = \"none\"",
            "server.toml:2:22: error: found \"none\" for \"unlisted_registers\", expected \"absent\" or \"pattern\"\n"
            "  unlisted_registers = \"none\"\n"
            "                       ^\n"},
        TBadServer{
            kType + "local_time = 2026-01-31T12:34:56",
            "server.toml:2:14: error: found a date-time without an offset for \"local_time\", expected a date-time "
            "with its offset from UTC, such as 2026-01-31T12:34:56+01:00\n"
            "  local_time = 2026-01-31T12:34:56\n"
            "               ^\n"},
        TBadServer{
            kType + "local_time = 2026-01-31T12:34:56-16:40",
            "server.toml:2:14: error: found an offset of more than 999 minutes, which a CIM datetime cannot hold, for "
            "\"local_time\", expected a date-time with its offset from UTC, such as 2026-01-31T12:34:56+01:00\n"
            "  local_time = 2026-01-31T12:34:56-16:40\n"
            "               ^\n"},
        TBadServer{
            kType + "local_time = 2026-01-31",
            "server.toml:2:14: error: found a date for \"local_time\", expected a date-time with its offset from "
            "UTC, such as 2026-01-31T12:34:56+01:00\n"
            "  local_time = 2026-01-31\n"
            "               ^\n"}));

INSTANTIATE_TEST_SUITE_P(
    Dot, BadServerFile,
    testing::Values(
        TBadServer{kType + "[dot]\nservice_processors = []",
                   "server.toml:3:1: error: found the unknown key \"service_processors\", expected one of sp_comm, "
                   "service_processor; did you mean \"service_processor\"?\n"
                   "  service_processors = []\n"
                   "  ^\n"},
        TBadServer{kType + "[[dot.service_processor]]",
                   "server.toml:2:1: error: found no \"block\", expected either \"block\" or \"block_file\"\n"
                   "  [[dot.service_processor]]\n"
                   "  ^\n"},
        TBadServer{kType + "[[dot.service_processor]]\nblock = \"\"\nblock_file = \"b\"",
                   "server.toml:4:1: error: found both, expected either \"block\" or \"block_file\"\n"
                   "  block_file = \"b\"\n"
                   "  ^\n"},
        TBadServer{
            kType + "[[dot.service_processor]]\nblock = \"00 1\"",
            "server.toml:3:14: error: found the end of the text in \"block\", expected pairs of hexadecimal digits\n"
            "  block = \"00 1\"\n"
            "               ^\n"},
        TBadServer{kType + "[[dot.service_processor]]\nblock = \"00 1 2\"",
                   "server.toml:3:14: error: found \" \" in \"block\", expected pairs of hexadecimal digits\n"
                   "  block = \"00 1 2\"\n"
                   "               ^\n"},
        TBadServer{kType + "[[dot.service_processor]]\nblock = \"\"\"\n00 xx\"\"\"",
                   "server.toml:3:9: error: found \"x\" in \"block\", expected pairs of hexadecimal digits\n"
                   "  block = \"\"\"\n"
                   "          ^\n"},
        TBadServer{kType + "[[dot.service_processor]]\nblock_file = \"\"",
                   "server.toml:3:14: error: found \"\", expected a file name\n"
                   "  block_file = \"\"\n"
                   "               ^\n"},
        TBadServer{kType + "[[dot.service_processor]]\nblock_file = \"a\\u0000b\"",
                   "server.toml:3:14: error: found \"a?b\", expected a file name\n"
                   "  block_file = \"a\\u0000b\"\n"
                   "               ^\n"}));

INSTANTIATE_TEST_SUITE_P(
    Node, BadServerFile,
    testing::Values(
        TBadServer{kType + "[bmc_node]",
                   "server.toml:2:1: error: found a table for \"bmc_node\", expected an array of tables\n"
                   "  [bmc_node]\n"
                   "  ^\n"},
        TBadServer{kType + "bmc_node = [1]",
                   "server.toml:2:13: error: found an integer, expected a [[bmc_node]] table\n"
                   "  bmc_node = [1]\n"
                   "              ^\n"},
        TBadServer{kType + "[[bmc_node]]\ntimestamp = \"12 34 56\"",
                   "server.toml:3:13: error: found 3 bytes in \"timestamp\", expected 4\n"
                   "  timestamp = \"12 34 56\"\n"
                   "              ^\n"},
        TBadServer{kType + "[[bmc_node]]\ntimestamp = \"12 34 56 78 9a\"",
                   "server.toml:3:13: error: found 5 bytes in \"timestamp\", expected 4\n"
                   "  timestamp = \"12 34 56 78 9a\"\n"
                   "              ^\n"},
        TBadServer{kType + "[[bmc_node]]\n[[bmc_node.register]]\nvalue = \"00\"",
                   "server.toml:3:1: error: found no \"address\", expected the register's address\n"
                   "  [[bmc_node.register]]\n"
                   "  ^\n"},
        TBadServer{kType + "[[bmc_node]]\n[[bmc_node.register]]\naddress = 1",
                   "server.toml:3:1: error: found no \"value\", expected the register's eight bytes, least significant "
                   "first\n"
                   "  [[bmc_node.register]]\n"
                   "  ^\n"},
        TBadServer{kType + "[[bmc_node]]\nregister = [{ address = 1, value = \"01\" }]",
                   "server.toml:3:36: error: found 1 byte in \"value\", expected 8\n"
                   "  register = [{ address = 1, value = \"01\" }]\n"
                   "                                     ^\n"},
        TBadServer{
            kType + "[[bmc_node]]\nregister = [{ address = 1, value = \"01 02 03 04 05 06 07 08\", header = \"\" }]",
            "server.toml:3:72: error: found 0 bytes in \"header\", expected 6\n"
            "  register = [{ address = 1, value = \"01 02 03 04 05 06 07 08\", header = \"\" }]\n"
            "                                                                         ^\n"},
        TBadServer{kType + "[[bmc_node]]\nregister = [{ chip = 256, address = 1, value = \"\" }]",
                   "server.toml:3:22: error: found 256 for \"chip\", expected an integer from 0 to 255\n"
                   "  register = [{ chip = 256, address = 1, value = \"\" }]\n"
                   "                       ^\n"},
        TBadServer{kType + "[[bmc_node]]\nregister = [{ address = -1, value = \"\" }]",
                   "server.toml:3:25: error: found -1 for \"address\", expected an integer from 0 to 4294967295\n"
                   "  register = [{ address = -1, value = \"\" }]\n"
                   "                          ^\n"},
        TBadServer{kType +
                       "[[bmc_node]]\nregister = [\n{ address = 0x01000005, value = \"01 02 03 04 05 06 07 08\" },\n"
                       "{ address = 5, value = \"01 02 03 04 05 06 07 08\" }]",
                   "server.toml:5:13: error: found a register that line 4 already has, expected each chip and address "
                   "(its low 24 bits) once\n"
                   "  { address = 5, value = \"01 02 03 04 05 06 07 08\" }]\n"
                   "              ^\n"}));

INSTANTIATE_TEST_SUITE_P(
    Area, BadServerFile,
    testing::Values(
        TBadServer{kType + "[[bmc_node]]\nstorage_area = [{ data = \"\" }]",
                   "server.toml:3:17: error: found no \"name\", expected the storage area's name\n"
                   "  storage_area = [{ data = \"\" }]\n"
                   "                  ^\n"},
        TBadServer{kType + "[[bmc_node]]\nstorage_area = [{ name = \"\", data = \"\" }]",
                   "server.toml:3:26: error: found an empty name, expected the storage area's name\n"
                   "  storage_area = [{ name = \"\", data = \"\" }]\n"
                   "                           ^\n"},
        TBadServer{kType + "[[bmc_node]]\nstorage_area = [{ name = \"a\" }]",
                   "server.toml:3:17: error: found no \"data\", expected either \"data\" or \"data_file\"\n"
                   "  storage_area = [{ name = \"a\" }]\n"
                   "                  ^\n"},
        TBadServer{kType + "[[bmc_node]]\nstorage_area = [{ name = \"a\", data = \"\", size = 2147483648 }]",
                   "server.toml:3:49: error: found 2147483648 for \"size\", expected an integer from -2147483648 to "
                   "2147483647\n"
                   "  storage_area = [{ name = \"a\", data = \"\", size = 2147483648 }]\n"
                   "                                                  ^\n"},
        TBadServer{kType + "[[bmc_node]]\nstorage_area = [\n{ name = \"abcdefghijklmnopqrstuvwxyz\", data = \"\" },\n"
                           "{ name = \"abcdefghijklmnopqrstuvwxy\", data = \"\" }]",
                   "server.toml:5:10: error: found a second storage area \"abcdefghijklmnopqrstuvwxy\", expected each "
                   "name (its first 25 bytes) once per node\n"
                   "  { name = \"abcdefghijklmnopqrstuvwxy\", data = \"\" }]\n"
                   "           ^\n"}));

INSTANTIATE_TEST_SUITE_P(
    Fault, BadServerFile,
    testing::Values(
        TBadServer{
            kFault + "lost = true",
            "server.toml:2:1: error: found no \"on\", expected one of register, timestamp, open, size, read, close, "
            "dot, ipmi\n"
            "  [[fault]]\n"
            "  ^\n"},
        TBadServer{kFault + "on = \"regster\"",
                   "server.toml:3:6: error: found \"regster\" for \"on\", expected one of register, timestamp, open, "
                   "size, read, close, dot, ipmi; did you mean \"register\"?\n"
                   "  on = \"regster\"\n"
                   "       ^\n"},
        TBadServer{kFault + "on = \"read\"\nlost = false",
                   "server.toml:4:1: error: found \"lost\" = false, which has no effect, expected true, or "
                   "\"completion_code\", \"truncate\" or \"delay_ms\"\n"
                   "  lost = false\n"
                   "  ^\n"},
        TBadServer{
            kFault + "on = \"other\"",
            "server.toml:3:6: error: found \"other\" for \"on\", expected one of register, timestamp, open, size, "
            "read, close, dot, ipmi\n"
            "  on = \"other\"\n"
            "       ^\n"},
        TBadServer{
            kFault + "on = \"ipmi\"",
            "server.toml:2:1: error: found none of \"completion_code\", \"lost\" and \"truncate\", expected one of "
            "them or \"delay_ms\"\n"
            "  [[fault]]\n"
            "  ^\n"},
        TBadServer{kFault + "on = \"ipmi\"\nlost = true\ntruncate = 9",
                   "server.toml:2:1: error: found more than one of \"completion_code\", \"lost\" and \"truncate\", "
                   "expected one\n"
                   "  [[fault]]\n"
                   "  ^\n"},
        TBadServer{kFault + "on = \"ipmi\"\nlost = true\ncompletion_code = 1\ndelay_ms = 1",
                   "server.toml:2:1: error: found more than one of \"completion_code\", \"lost\" and \"truncate\", "
                   "expected one\n"
                   "  [[fault]]\n"
                   "  ^\n"},
        TBadServer{kFault + "on = \"dot\"\ncompletion_code = 1",
                   "server.toml:4:1: error: found \"completion_code\" for dot commands, which have no completion code, "
                   "expected \"lost\" or \"truncate\"\n"
                   "  completion_code = 1\n"
                   "  ^\n"},
        TBadServer{kFault + "on = \"read\"\ncompletion_code = 256",
                   "server.toml:4:19: error: found 256 for \"completion_code\", expected an integer from 0 to 255\n"
                   "  completion_code = 256\n"
                   "                    ^\n"},
        TBadServer{kFault + "on = \"read\"\ntruncate = 8",
                   "server.toml:4:12: error: found 8 for \"truncate\", expected an integer from 9 to 2147483647\n"
                   "  truncate = 8\n"
                   "             ^\n"},
        TBadServer{kFault + "on = \"dot\"\ntruncate = -1",
                   "server.toml:4:12: error: found -1 for \"truncate\", expected an integer from 0 to 2147483647\n"
                   "  truncate = -1\n"
                   "             ^\n"},
        TBadServer{kFault + "on = \"read\"\nnth = 0\nlost = true",
                   "server.toml:4:7: error: found 0 for \"nth\", expected an integer from 1 to 9223372036854775807\n"
                   "  nth = 0\n"
                   "        ^\n"},
        TBadServer{kFault + "on = \"read\"\nnode = -1\nlost = true",
                   "server.toml:4:8: error: found -1 for \"node\", expected an integer from 0 to 2147483647\n"
                   "  node = -1\n"
                   "         ^\n"},
        TBadServer{kFault + "on = \"read\"\ndelay_ms = 86400001",
                   "server.toml:4:12: error: found 86400001 for \"delay_ms\", expected an integer from 0 to 86400000\n"
                   "  delay_ms = 86400001\n"
                   "             ^\n"}));

INSTANTIATE_TEST_SUITE_P(
    Syntax, BadServerFile,
    testing::Values(
        TBadServer{"machine_type = \"6203",
                   "server.toml:1:21: error: found the end of the file, expected the string's closing quote\n"
                   "  machine_type = \"6203\n"
                   "                      ^\n"},
        TBadServer{"machine_type = \"6203\n[ipmi]",
                   "server.toml:1:21: error: found the end of the line, expected the string's closing quote\n"
                   "  machine_type = \"6203\n"
                   "                      ^\n"},
        TBadServer{"machine_type = \"\xC3\xA9\xFF\"",
                   "server.toml:1:19: error: found the byte 0xFF, which is not UTF-8, expected UTF-8 text\n"
                   "  machine_type = \"\xC3\xA9\xFF\"\n"
                   "                   ^\n"},
        TBadServer{"# \xE2\x82",
                   "server.toml:1:3: error: found the byte 0xE2, which is not UTF-8, expected UTF-8 text\n"
                   "  # \xE2\x82\n"
                   "    ^\n"},
        TBadServer{"machine_type = \"\"\nmachine_type = \"\"",
                   "server.toml:2:1: error: found a second \"machine_type\", expected it once; the first is in line 1\n"
                   "  machine_type = \"\"\n"
                   "  ^\n"},
        TBadServer{"# time\nx = 1\nlocal_time = 2026-01-31T?2:34:56",
                   "server.toml:3:14: error: found \"2026-01-31T?2:34:56\", expected a value; a string needs quotes\n"
                   "  local_time = 2026-01-31T?2:34:56\n"
                   "               ^\n"},
        TBadServer{"machine_type = 4411a",
                   "server.toml:1:16: error: found \"4411a\", expected a value; a string needs quotes\n"
                   "  machine_type = 4411a\n"
                   "                 ^\n"},
        TBadServer{"machine_type =",
                   "server.toml:1:15: error: found the end of the file, expected a value\n"
                   "  machine_type =\n"
                   "                ^\n"},
        TBadServer{"machine_type : \"6203\"",
                   "server.toml:1:14: error: found \":\", expected \"=\" after the key\n"
                   "  machine_type : \"6203\"\n"
                   "               ^\n"},
        TBadServer{"machine_type = \"\" [ipmi]",
                   "server.toml:1:19: error: found \"[\", expected the end of the line\n"
                   "  machine_type = \"\" [ipmi]\n"
                   "                    ^\n"},
        TBadServer{"x = 9223372036854775808",
                   "server.toml:1:5: error: found \"9223372036854775808\", expected an integer from "
                   "-9223372036854775808 to 9223372036854775807\n"
                   "  x = 9223372036854775808\n"
                   "      ^\n"},
        TBadServer{"x = \"\\q\"",
                   "server.toml:1:7: error: found \"q\", expected one of b, t, n, f, r, u, U, \" and \\ after a "
                   "backslash\n"
                   "  x = \"\\q\"\n"
                   "        ^\n"},
        TBadServer{"x = \"\x01\"",
                   "server.toml:1:6: error: found the control character 0x01, expected a string without control "
                   "characters\n"
                   "  x = \"?\"\n"
                   "       ^\n"},
        TBadServer{"[[bmc_node]\n",
                   "server.toml:1:11: error: found \"]\", expected \"]]\"\n"
                   "  [[bmc_node]\n"
                   "            ^\n"},
        TBadServer{"[ipmi]\n[ipmi]",
                   "server.toml:2:2: error: found a second \"ipmi\", expected it once; the first is in line 1\n"
                   "  [ipmi]\n"
                   "   ^\n"},
        TBadServer{"x = [1 2]",
                   "server.toml:1:8: error: found \"2\", expected a comma or the closing \"]\"\n"
                   "  x = [1 2]\n"
                   "         ^\n"},

        TBadServer{"a = { \xC3\xA4 = 1 }",
                   "server.toml:1:7: error: found \"\xC3\xA4\", expected a key or the closing \"}\"\n"
                   "  a = { \xC3\xA4 = 1 }\n"
                   "        ^\n"},
        // Two of the 34 bytes before the key are continuation bytes.
        TBadServer{kType + "ipmi = { driver_present = \"\xC3\xA4\xC3\xA4\", x = 1 }",
                   "server.toml:2:35: error: found the unknown key \"x\", expected one of driver_present\n"
                   "  ipmi = { driver_present = \"\xC3\xA4\xC3\xA4\", x = 1 }\n"
                   "                                  ^\n"},
        TBadServer{"a.b.c.d.e.f.g.h.i.j.k.l.m.n.o.p.q = 1",
                   "server.toml:1:33: error: found a key of more than 16 parts, expected at most 16\n"
                   "  a.b.c.d.e.f.g.h.i.j.k.l.m.n.o.p.q = 1\n"
                   "                                  ^\n"},
        TBadServer{"x = [[[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]]",
                   "server.toml:1:21: error: found values nested more than 16 levels deep, expected at most 16\n"
                   "  x = [[[[[[[[[[[[[[[[1]]]]]]]]]]]]]]]]\n"
                   "                      ^\n"}));

}  // namespace
}  // namespace tests
