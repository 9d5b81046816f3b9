void thisFunctionIsNowhere();

extern "C" __attribute__((visibility("default"))) void callNowhere() {
  thisFunctionIsNowhere();
}
