// The jobs of docs/performance.md in C++; R and Python run theirs in peers.R and peers.py.

void measureSummaries();
void measureArrays();
void measureChance();
void measureCalls();

int main() {
  measureSummaries();
  measureArrays();
  measureChance();
  measureCalls();
}
