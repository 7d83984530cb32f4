// A rule module whose entry points are hidden: built with
// -fvisibility=hidden and not marked for export, the mistake the front ends
// must explain. The library loads; loadPlausiVersteckt is not found in it.

#include <quorel/quorel.h>

namespace {

class VersteckteRegeln : public quorel::Plausi {
 protected:
  void performImpl(quorel::RuntimeContext *, const char *) override {}
  quorel::Value *performFunctionImpl(quorel::RuntimeContext *rt, const char *) override {
    return rt->createInvalidValue();
  }
};

}  // namespace

extern "C" quorel::Plausi *loadPlausiVersteckt() { return new VersteckteRegeln(); }
extern "C" void unloadPlausiVersteckt(quorel::Plausi *plausi) { delete plausi; }
