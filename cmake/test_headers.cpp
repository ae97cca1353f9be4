// Exists so that the headers of the tests have a target that compiles them once for all test programs.
int main() {}
