// The floor of every whole-process figure: a C++ program that does nothing.

int main() {}
