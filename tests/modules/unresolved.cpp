// A module that calls what nobody provides.

extern "C" int tallbookTestSymbolThatNobodyProvides();
extern "C" int callIt();

int callIt() {
  return tallbookTestSymbolThatNobodyProvides();
}
