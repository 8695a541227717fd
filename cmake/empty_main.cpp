// Does nothing: that it links is what is looked at.
int main() {}
