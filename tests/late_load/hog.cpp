// A library that takes QUOREL_HOG_BYTES of the static TLS block, as plugins
// built with the initial-exec model do.

__thread char hog[QUOREL_HOG_BYTES] __attribute__((tls_model("initial-exec")));

extern "C" __attribute__((visibility("default"))) int touchHog() {
  hog[0] = 1;
  return hog[0];
}
