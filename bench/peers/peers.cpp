// The jobs of docs/performance.md in C++; R and Python run theirs in peers.R and peers.py.

void measureArrays();
void measureChance();

int main() {
  measureArrays();
  measureChance();
}
