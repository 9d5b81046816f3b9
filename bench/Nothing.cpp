// What a C++ program costs that does nothing: the measure for those that do a little.

int main() {}
