# The front door.  Each target installs what is missing, builds what is stale and does its job.
#
#   make demo      descriptive statistics of real data, through the host and the library
#   make check     build everything and run the tests
#   make asan      the tests under AddressSanitizer and UndefinedBehaviorSanitizer
#   make tsan      all functions in eight threads at once under ThreadSanitizer
#   make coverage  the share of lines that the tests execute, folder by folder
#   make bench     the measurements
#   make bench-peers  the same jobs in R, SciPy, GSL and Boost: docs/performance.md
#   make accuracy  error of every probability and quantile against high-precision references: docs/accuracy.md, docs/functions/accuracy.md
#   make docs      the reference site, build/site/index.html: guide, Python, C++, language, entry points, with search
#   make gallery   run the examples and write docs/gallery.md
#   make tidy      clang-tidy over the entry points, the kernels and the numerical functions; every finding is an error
#   make clang     the libraries and the command, built by Clang without a warning
#   make fuzz SECONDS=300   the fuzz targets, sharing that time
#   make format    format the sources; make format-check: fail where they are not
#   make install PREFIX=/usr/local

PREFIX ?= /usr/local
JOBS ?= $(shell nproc)
CTEST_FLAGS ?= --output-on-failure -j $(JOBS)
SOURCES = git ls-files '*.cpp' '*.hpp' '*.h'

.PHONY: all packages build demo check asan tsan coverage bench bench-peers docs gallery accuracy tidy clang fuzz format format-check install clean

all: build

packages:
	@scripts/install-packages

build: packages
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)

demo: packages
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS) --target vexel
	@examples/demo build/bin/vexel

check:
	@scripts/install-packages tests
	@cmake --preset release >/dev/null
	@cmake --build --preset release -j $(JOBS)
	@ctest --test-dir build $(CTEST_FLAGS)

asan: packages
	@cmake --preset asan >/dev/null
	@cmake --build --preset asan -j $(JOBS)
	@ctest --test-dir build-asan $(CTEST_FLAGS)

tsan: packages
	@cmake --preset tsan >/dev/null
	@cmake --build --preset tsan -j $(JOBS) --target functions_faults
	@setarch -R build-tsan/bin/functions_faults --gtest_filter='Functions.*'

coverage:
	@scripts/install-packages coverage
	@cmake --preset coverage >/dev/null
	@cmake --build --preset coverage -j $(JOBS)
	@find build-coverage -name '*.gcda' -delete
	@ctest --test-dir build-coverage $(CTEST_FLAGS)
	@scripts/coverage build-coverage

bench:
	@scripts/install-packages bench
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench -j $(JOBS)
	@for b in build-bench/bin/*_bench; do echo "== $$b"; $$b; done

bench-peers:
	@scripts/install-packages peers
	@cmake --preset bench >/dev/null
	@cmake --build --preset bench -j $(JOBS) --target peers
	@scripts/bench-peers build-bench/bin/peers

docs: build
	@scripts/install-packages docs
	@rm -rf build/pages build/site && mkdir -p build/pages
	@PATH=/usr/bin:$$PATH sphinx-build -q -W --keep-going -b html -d build/doctrees -c docs/site build/pages build/site
	@echo build/site/index.html

gallery: build
	@scripts/gallery build/bin/vexel

accuracy: build
	@PATH=/usr/bin:$$PATH python3 bench/accuracy/accuracy_report.py build/lib/libnag2.so build/bin/vexel --markdown
	@PATH=/usr/bin:$$PATH python3 bench/accuracy/functions_report.py build/lib include

TIDY = git ls-files 'stats/src/*.cpp' 'kernels/*.cpp' 'numerics/*.cpp'

tidy: build
	@scripts/install-packages check
	@$(TIDY) | xargs -P $(JOBS) -n 8 clang-tidy -p build --quiet --extra-arg=-Wno-unknown-warning-option

clang: packages
	@scripts/install-packages fuzz
	@cmake --preset clang >/dev/null
	@cmake --build --preset clang -j $(JOBS) --target vexel stats_hw

SECONDS ?= 300
fuzz:
	@scripts/install-packages fuzz
	@cmake --preset fuzz >/dev/null
	@cmake --build --preset fuzz -j $(JOBS) --target fuzz_calls fuzz_language fuzz_functions fuzz_files vexel
	@scripts/fuzz build-fuzz/bin $(SECONDS)

format:
	@$(SOURCES) | xargs clang-format -i

format-check:
	@scripts/install-packages check
	@$(SOURCES) | xargs clang-format --dry-run --Werror

install: build
	@cmake --install build --prefix $(PREFIX)

clean:
	@rm -rf build build-asan build-bench build-clang build-coverage build-debug build-fuzz build-tsan build-wheel
