extern "C" __attribute__((visibility("default"))) int moduleAnswer() {
  return 42;
}
