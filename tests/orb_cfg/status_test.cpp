// The status helpers: flag probes, the IPv6 address texts, the event and the power supply count
// taken from the sensor records.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "orb_cfg_test.h"

namespace tessera::test {
namespace {

constexpr const char kRcFormat[] = "DEBUG: %s [%d]: rc = %d\n";

TEST(FlagProbes, GiveTheStoreFlagAnd0WhenItCannotBeRead) {
  struct Probe {
    int32_t (*probe)();
    const char *key;
  };
  const Probe probes[] = {
      {is_tarn_present, "tarnstatus_bool_tarn_present"},
      {is_tarn_sd_present, "tarnstatus_bool_tarn_sd_present"},
      {is_tarn_sd_enabled, "tarnstatus_bool_tarn_sd_enable"},
      {is_tarn_sd_write_protected, "tarnstatus_bool_tarn_sd_ro"},
      {is_vmkey_enabled, "pm_bool_vfk_enabled"},
  };
  for (const Probe &p : probes) {
    store().reset();
    sink().reset();
    store().set_bool(p.key, true);
    EXPECT_EQ(p.probe(), 1) << p.key;
    store().set_bool(p.key, false);
    EXPECT_EQ(p.probe(), 0) << p.key;
    store().erase(p.key);
    EXPECT_EQ(p.probe(), 0) << p.key;
    EXPECT_EQ(sink().count(kRcFormat), 2U) << p.key << ": a failed read reports nothing";
    EXPECT_EQ(sink().reports().at(0).message, "rc = 1\n");
    EXPECT_EQ(store().calls("orb_config_get_bool").back().name, p.key);
  }
}

TEST(SplitIpv6ExtendedAddr, SplitsAtTheFirstSlash) {
  struct Case {
    const char *text, *address, *prefix;
  };
  // clang-format off
  const Case cases[] = {{"fe80::1/64", "fe80::1", "64"}, {"a/b/c", "a", "b/c"}, {"::1/", "::1", ""},
                        {"::1", "::1", ""}, {"/64", "", "64"}, {"", "", ""}};
  // clang-format on
  for (const Case &c : cases) {
    std::array<char, 16> address;
    std::array<char, 16> prefix;
    address.fill('#');
    prefix.fill('#');
    EXPECT_EQ(split_ipv6_extended_addr(c.text, address.data(), prefix.data()), 0);
    EXPECT_STREQ(address.data(), c.address) << c.text;
    EXPECT_STREQ(prefix.data(), c.prefix) << c.text;
  }
  std::array<char, 4> out{};
  EXPECT_EQ(split_ipv6_extended_addr(nullptr, out.data(), out.data()), 1);
  EXPECT_EQ(split_ipv6_extended_addr("a", nullptr, out.data()), 1);
  EXPECT_EQ(split_ipv6_extended_addr("a", out.data(), nullptr), 1);
}

TEST(Ipv6ExtendedAddrDisplay, ShowsAnUnspecifiedAddressAsTwoColons) {
  struct Case {
    std::string text, shown;
  };
  const std::string long_address(200, 'f');
  const std::string long_prefix(200, '9');
  // clang-format off
  const Case cases[] = {
      {"::/0", "::"}, {"/64", "::"}, {"", "::"}, {"::", "::"},
      {"fe80::1/64", "fe80::1/64"}, {"::1/128", "::1/128"}, {":::", ":::"},
      // Longer than the 47 + 7 characters a network record field holds.
      {long_address + "/64", long_address + "/64"},
      {"/" + long_prefix, "::"},
      {std::string(47, 'a') + "/1234567", std::string(47, 'a') + "/1234567"},
  };
  // clang-format on
  for (const Case &c : cases) {
    std::vector<char> text(c.text.begin(), c.text.end());
    text.resize(std::max<std::size_t>(text.size() + 1, 3), '\0');
    EXPECT_EQ(ipv6_extended_addr_display(text.data()), 0);
    EXPECT_EQ(std::string(text.data()), c.shown) << c.text;
  }
  EXPECT_EQ(ipv6_extended_addr_display(nullptr), 1);
}

TEST(RpConfigChanged, SignalsTheEventAndHandsOnItsAnswer) {
  store().set_event_result(42);
  EXPECT_EQ(rp_config_changed(), 42);
  const auto calls = store().calls("orb_event_occurred");
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_EQ(calls[0].name, "gui_event_rp_config_changed");
  EXPECT_EQ(calls[0].value, 0);
  EXPECT_EQ(calls[0].flag, 0);
}

// A sensor list as "GetActiveSensors" hands it out: records of 68 bytes, each with its index,
// kind and a non-zero byte 3 unless `ends` says otherwise.
struct Sensor {
  uint8_t index;
  char kind;
  uint8_t more = 1;
};

void serve_sensors(std::vector<Sensor> sensors, uint32_t length, int32_t result = 0) {
  store().on_function("GetActiveSensors", [sensors, length, result](uint32_t *word, const void *,
                                                                    uint32_t capacity, void *out) {
    auto *bytes = static_cast<uint8_t *>(out);
    for (std::size_t i = 0; i < sensors.size() && (i + 1) * 68 <= capacity; ++i) {
      bytes[i * 68] = sensors[i].index;
      bytes[i * 68 + 2] = static_cast<uint8_t>(sensors[i].kind);
      bytes[i * 68 + 3] = sensors[i].more;
    }
    *word = length;
    return result;
  });
}

using Writes = std::vector<std::pair<std::string, int64_t>>;

Writes set_int_calls() {
  Writes writes;
  for (const StoreCall &call : store().calls("orb_config_set_int")) {
    EXPECT_EQ(call.flag, 1);
    writes.emplace_back(call.name, call.value);
  }
  return writes;
}

TEST(InitPowerSupply, CountsSupplySensorsAndNotesTheirIndexes) {
  const std::string one = "pm_int_sensor_index_1";
  const std::string two = "pm_int_sensor_index_2";
  const std::string red = "pm_int_sensred_index";
  const std::string max = "pm_int_max_power_supply_index";
  Writes all(256, {one, 9});  // the buffer holds 256 records, whatever the length word says
  all.emplace_back(max, 256);
  struct Case {
    const char *what;
    std::vector<Sensor> sensors;
    uint32_t length;
    Writes writes;
  };
  const Case cases[] = {
      {"d, e, t", {{5, 'd'}, {6, 'e'}, {7, 't'}}, 3, {{one, 5}, {two, 6}, {red, 7}, {max, 2}}},
      {"two e", {{5, 'e'}, {200, 'e'}}, 2, {{two, 5}, {two, 200}, {max, 2}}},
      {"other kinds", {{1, 'x'}, {2, 'D'}, {3, 'd'}}, 3, {{one, 3}, {max, 1}}},
      {"length 0", {{5, 'd'}}, 0, {{max, 0}}},
      {"negative length", {{5, 'd'}}, 0x80000000U, {{max, 0}}},
      {"first ends", {{5, 'd', 0}}, 1, {{max, 0}}},
      {"length bounds", {{5, 'd'}, {6, 'e'}, {7, 'd'}}, 2, {{one, 5}, {two, 6}, {max, 2}}},
      {"byte 3 ends", {{5, 'd'}, {6, 'e', 0}, {7, 'd'}}, 3, {{one, 5}, {max, 1}}},
      {"256 records", std::vector<Sensor>(256, {9, 'd'}), 100000, all},
  };
  for (const Case &c : cases) {
    store().reset();
    serve_sensors(c.sensors, c.length);
    EXPECT_EQ(init_power_supply(), 1) << c.what;
    EXPECT_EQ(set_int_calls(), c.writes) << c.what;
    const auto call = store().calls("orb_function_execute").at(0);
    EXPECT_EQ(call.name, "GetActiveSensors");
    EXPECT_EQ(call.length_in, 0U);
    EXPECT_TRUE(call.input_null);
    EXPECT_EQ(call.capacity, 17408U);
  }
  EXPECT_EQ(sink().count(kRcFormat), 0U);
}

TEST(InitPowerSupply, GoesOnAfterAFailedSensorListAndReturnsTheLastWrite) {
  serve_sensors({{4, 'e'}}, 1, -5);  // failed, but left a length word and a record behind
  EXPECT_EQ(init_power_supply(), 1);
  EXPECT_EQ(set_int_calls(),
            (Writes{{"pm_int_sensor_index_2", 4}, {"pm_int_max_power_supply_index", 1}}));
  ASSERT_EQ(sink().count(kRcFormat), 1U);
  EXPECT_EQ(sink().reports()[0].message, "rc = -5\n");
  store().reset();
  store().fail("orb_function_execute");  // fails without writing anything
  store().fail("orb_config_set_int", "pm_int_max_power_supply_index");
  EXPECT_EQ(init_power_supply(), 0);
  EXPECT_EQ(set_int_calls(), (Writes{{"pm_int_max_power_supply_index", 0}}));
}

}  // namespace
}  // namespace tessera::test
