// Several runs at once, each thread with its own rule set, context, record
// and logger, as hosts are allowed to do. Meant for the ThreadSanitizer
// build, where any shared state that is not safe shows up.

#include <pthread.h>

#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "quorel/quorel.h"
#include "test_support.h"

namespace quorel {
namespace {

// A material of two municipalities, private to one thread.
class TwoPlaces : public MaterialAccess {
 public:
  TwoPlaces() {
    berlin_.setValue("Gemeinden.PLZ", "10115");
    berlin_.setValue("Gemeinden.Ort", "Berlin");
  }
  bool isMaterialAvailable(MaterialDescriptor *) override { return true; }
  bool containsValues(MaterialDescriptor *, RecordFilter *, FieldSet *, ValueSet *) override { return false; }
  void readRecords(DataRecordSet *result, MaterialDescriptor *, RecordFilter *, FieldSet *) override {
    result->addDataRecord(&berlin_);
  }

 private:
  SimpleDataRecord berlin_;
};

struct ThreadResult {
  int problems = 0;
  bool ok = true;
  std::string log;
};

void checkRecords(int seed, ThreadResult *result) {
  PlausiLoader loader;
  Plausi *rules = loader.loadPlausi(QUOREL_ANTRAG_MODULE, "Antrag");
  TwoPlaces places;
  std::ostringstream log;
  {
    Logger logger(&log, TRACE);
    for (int i = 0; i < 50; ++i) {
      SimpleDataRecord record;
      record.setValue("Antrag.Antragsnummer", (i + seed) % 2 ? "AB-123456" : "A-1");
      record.setValue("Antrag.Antragsteller.Name", "M\xFCller");
      record.setValue("Antrag.Antragsteller.Geburtsdatum", "12.03.1980");
      record.setValue("Antrag.Antragsteller.Familienstand", "G");
      record.setValue("Antrag.Adresse.PLZ", i % 3 ? "10115" : "999");
      record.setValue("Antrag.Adresse.Ort", "Berlin");
      record.setValue("Antrag.Betrag", "250,00");
      record.setValue("Antrag.Antragsdatum", "15.01.2024");
      record.setSize("Antrag.Einkommen", 2);
      record.setValue("Antrag.Einkommen[0]", "2.000,00");
      record.setValue("Antrag.Einkommen[1]", "6.000,00");
      PlausiContext context(&record);  // reseeds the shared random generator
      context.setFlow("Pruefung");
      context.setLogger(&logger);
      context.setMaterialAccess(&places);
      rules->perform(&context);
      result->problems += context.getNumOfProblems();
      result->ok = result->ok && context.getNumOfProblems() > 0;
      RuntimeContext runtime(&context, rules);
      double drawn = Functions::ZUFALLSZAHL(&runtime)->asReal();
      result->ok = result->ok && drawn >= 0.0 && drawn <= 1.0;
      // The numbers of a sequence walk belong to this thread's run.
      Value *steps = runtime.createSequenceRange(runtime.createNumberValue(1.0), runtime.createNumberValue(2.0),
                                                 runtime.createNumberValue(9.0));
      result->ok = result->ok && Functions::MAXIMUM_AUS_REIHE(&runtime, steps)->asInteger() == 9;
      result->ok = result->ok && Pattern::matches("[0-9]+(,[0-9]{2})?", "250,00", 0);
    }
  }
  result->log = log.str();
  loader.unloadPlausi(rules, "Antrag");
}

TEST(ConcurrentRunsTest, FourThreadsCheckRecordsAtOnce) {
  std::vector<ThreadResult> results(4);
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) threads.emplace_back(checkRecords, t, &results[t]);
  for (std::thread &thread : threads) thread.join();
  for (const ThreadResult &result : results) {
    EXPECT_TRUE(result.ok);
    EXPECT_GT(result.problems, 50);
    EXPECT_NE(std::string::npos, result.log.find("\nTRACE: --> Plausi"));
  }
}

// Every problem of 300 records of differing faults, checked with one
// context reset record after record, or with a new context for each.
std::string checkWithContexts(Plausi *rules, bool reuse) {
  TwoPlaces places;
  PlausiContext kept(nullptr);
  std::string transcript;
  for (int i = 0; i < 300; ++i) {
    SimpleDataRecord record;
    record.setValue("Antrag.Antragsnummer", i % 2 ? "AB-123456" : "A-1");
    if (i % 5 != 0) record.setValue("Antrag.Antragsteller.Name", i % 7 ? "M\xFCller" : "");
    record.setValue("Antrag.Antragsteller.Geburtsdatum", i % 4 ? "12.03.1980" : "31.02.2030");
    record.setValue("Antrag.Antragsteller.Familienstand", i % 3 ? "G" : "Q");
    record.setValue("Antrag.Adresse.PLZ", i % 3 ? "10115" : "999");
    record.setValue("Antrag.Betrag", i % 6 ? "250,00" : "-1");
    record.setValue("Antrag.Antragsdatum", "15.01.2024");
    record.setSize("Antrag.Einkommen", i % 4);
    for (int k = 0; k < i % 4; ++k) {
      record.setValue(("Antrag.Einkommen[" + std::to_string(k) + "]").c_str(), k % 2 ? "6.000,00" : "x");
    }
    std::unique_ptr<PlausiContext> fresh;
    PlausiContext *context = &kept;
    if (reuse) {
      kept.reset(&record);
    } else {
      fresh = std::make_unique<PlausiContext>(&record);
      context = fresh.get();
    }
    context->setFlow("Pruefung");
    context->setMaterialAccess(&places);
    transcript += "record " + std::to_string(i);
    try {
      rules->perform(context);
    } catch (const PlausiException &e) {
      transcript += std::string(" failed ") + e.getMessage();  // the problems so far stay
    }
    transcript += " ok " + std::to_string(context->isOk()) + "\n";
    for (std::int32_t p = 0; p < context->getNumOfProblems(); ++p) {
      transcript += describeProblem(*context->getProblem(p)) + "\n";
    }
  }
  return transcript;
}

TEST(ConcurrentRunsTest, AContextResetForEachRecordReportsWhatNewContextsReport) {
  PlausiLoader loader;
  Plausi *rules = loader.loadPlausi(QUOREL_ANTRAG_MODULE, "Antrag");
  std::string expected = checkWithContexts(rules, false);
  EXPECT_NE(std::string::npos, expected.find("ok 0")) << "the records should fail";
  EXPECT_NE(std::string::npos, expected.find("ok 1")) << "some records should pass";
  EXPECT_NE(std::string::npos, expected.find("failed")) << "some runs should fail";
  loader.unloadPlausi(rules, "Antrag");
  // On three threads at once, each with its own rule set; two of them take
  // the memory of their queries, walks and problems from the heap alone.
  std::vector<std::string> transcripts(3);
  std::vector<std::thread> threads;
  for (int t = 0; t < 3; ++t) {
    threads.emplace_back([t, &transcripts] {
      if (t > 0) ObjectPool::bypassOnThisThread();
      PlausiLoader own;
      Plausi *threadRules = own.loadPlausi(QUOREL_ANTRAG_MODULE, "Antrag");
      transcripts[t] = checkWithContexts(threadRules, t != 1);
      own.unloadPlausi(threadRules, "Antrag");
    });
  }
  for (std::thread &thread : threads) thread.join();
  for (const std::string &transcript : transcripts) EXPECT_EQ(expected, transcript);
}

// Hosts may check on threads with small stacks: a match deeper than such a
// stack moves to a private one, on every thread at once. The depth stays
// within what ThreadSanitizer can follow on one stack (its call history
// holds some 64 000 calls).
void *matchDeeply(void *matched) {
  std::string pairs;
  for (int i = 0; i < 4000; ++i) pairs += "ab";
  *static_cast<bool *>(matched) = Pattern::matches("(ab)*", pairs.c_str(), 0) &&
                                  !Pattern::matches("(ab)*", (pairs + "a").c_str(), 0);
  return nullptr;
}

TEST(ConcurrentRunsTest, DeepMatchesOnSmallThreadStacks) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 1024 * 1024);
  pthread_t threads[4];
  bool matched[4] = {};
  for (int t = 0; t < 4; ++t) ASSERT_EQ(0, pthread_create(&threads[t], &attributes, matchDeeply, &matched[t]));
  for (pthread_t thread : threads) pthread_join(thread, nullptr);
  pthread_attr_destroy(&attributes);
  for (bool each : matched) EXPECT_TRUE(each);
}

}  // namespace
}  // namespace quorel
