// Main of every unit test program: each test starts with an empty store and an empty sink.
#include <gtest/gtest.h>

#include "capture_sink.h"
#include "fake_store.h"

namespace {

class ResetDoubles : public ::testing::EmptyTestEventListener {
  void OnTestStart(const ::testing::TestInfo & /*info*/) override {
    tessera::test::FakeStore::instance().reset();
    tessera::test::CaptureSink::instance().reset();
  }
};

}  // namespace

int main(int argc, char **argv) {
  ::testing::InitGoogleTest(&argc, argv);
  ::testing::UnitTest::GetInstance()->listeners().Append(new ResetDoubles);
  return RUN_ALL_TESTS();
}
