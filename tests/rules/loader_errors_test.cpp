#include <string>

#include <gtest/gtest.h>

#include "quorel/quorel.h"
#include "test_support.h"

namespace quorel {
namespace {

// The library's exceptions keep their messages; the platform's reason is
// kept beside them for the host.
TEST(LoaderErrorsTest, MissingLibraryKeepsTheLoadersReason) {
  PlausiLoader loader;
  // Without a slash the name is searched only in the system's library paths.
  expectFailure([&] { loader.loadPlausi("libquorel_sample_rules.so", "Sample"); }, EXCEPTION_LOAD_LIBRARY,
                "libquorel_sample_rules.so");
  std::string reason = loader.getLastError();
  EXPECT_NE(std::string::npos, reason.find("libquorel_sample_rules.so")) << reason;
  EXPECT_NE(std::string::npos, reason.find("No such file")) << reason;
}

TEST(LoaderErrorsTest, MissingEntryNamesTheSymbol) {
  PlausiLoader loader;
  expectFailure([&] { loader.loadPlausi(QUOREL_SAMPLE_MODULE, "Fehlt"); }, EXCEPTION_LOAD_ENTRY, "Fehlt");
  EXPECT_NE(std::string::npos, std::string(loader.getLastError()).find("loadPlausiFehlt"));
  expectFailure([&] { loader.unloadPlausi(nullptr, "Nie"); }, EXCEPTION_UNLOAD_ENTRY, "Nie");

  // A call that succeeds clears the reason.
  Plausi *plausi = loader.loadPlausi(QUOREL_SAMPLE_MODULE, "Sample");
  EXPECT_STREQ("", loader.getLastError());
  loader.unloadPlausi(plausi, "Sample");
  EXPECT_STREQ("", loader.getLastError());
}

TEST(LoaderErrorsTest, DeclaredFlowsAndTheRootTopic) {
  PlausiLoader loader;
  Plausi *sample = loader.loadPlausi(QUOREL_SAMPLE_MODULE, "Sample");
  EXPECT_TRUE(sample->isKnownFlow("Pruefung"));
  EXPECT_TRUE(sample->isKnownFlow("Abbruch"));
  EXPECT_FALSE(sample->isKnownFlow("pruefung"));
  EXPECT_FALSE(sample->isKnownFlow(nullptr));
  EXPECT_EQ(nullptr, sample->getRootTopic());
  loader.unloadPlausi(sample, "Sample");

  Plausi *antrag = loader.loadPlausi(QUOREL_ANTRAG_MODULE, "Antrag");
  ASSERT_NE(nullptr, antrag->getRootTopic());
  EXPECT_EQ("Antrag", antrag->getRootTopic()->getHierarchyText());
  const char *const *flows = antrag->getFlows();
  ASSERT_NE(nullptr, flows);
  EXPECT_STREQ("Pruefung", flows[0]);
  EXPECT_STREQ("Schnellpruefung", flows[1]);
  EXPECT_EQ(nullptr, flows[2]);
  loader.unloadPlausi(antrag, "Antrag");

  // A module that declares nothing runs every flow, as before.
  NoRules undeclared;
  EXPECT_EQ(nullptr, undeclared.getFlows());
  EXPECT_TRUE(undeclared.isKnownFlow("Irgendeiner"));
  EXPECT_TRUE(undeclared.isKnownFlow(nullptr));
}

}  // namespace
}  // namespace quorel
