// The program whose precompiled headers the tests share.
int main() { return 0; }
