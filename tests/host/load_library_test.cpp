// Libraries that cannot be loaded.

#include <gtest/gtest.h>

#include <vexel/kernel.hpp>

TEST(LoadLibraryTest, WhatCannotBeLoadedIsAHostErrorWithTheReason) {
  const struct {
    const char* path;
    const char* reason;
  } cases[] = {
      {INCOMPLETE_LIBRARY_PATH, "undefined symbol: nag2_not_in_any_library"},
      {"/nowhere/libstats_hw.so", "cannot open shared object file"},
      {"libm.so.6", "the library \"libm.so.6\" has no entry points"},
  };
  for (const auto& [path, reason] : cases) {
    vexel::Kernel kernel;
    try {
      kernel.loadLibrary(path);
      ADD_FAILURE() << path << " was loaded";
    } catch (const vexel::Error& error) {
      EXPECT_NE(std::string(error.what()).find(reason), std::string::npos) << error.what();
    }
  }
}
