#include <iostream>

#include <quorvel/Version.h>

int main() { std::cout << QuorvelVersionString << '\n'; }
