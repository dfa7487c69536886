# The front door: `make demo` shows the application at work, `make check` builds and tests it.
# Build trees: build/ (optimised, with debug info) and build-asan/ (AddressSanitizer and
# UndefinedBehaviorSanitizer).

BUILD      ?= build
ASAN_BUILD ?= build-asan
JOBS       ?= $(shell nproc)
# Where `make install` puts Kestrail; DESTDIR, when given, stages the install below it.
PREFIX     ?= /usr/local

# Debian packages, by what needs them.
BUILD_PACKAGES := cmake make g++ pkg-config gettext libgtest-dev libboost-dev libglib2.0-dev \
                  libgtk-3-dev shared-mime-info desktop-file-utils scdoc dpkg-dev
# Only the tests need these: the window test runs the dialogs on a virtual display and reads them;
# the language test makes a German locale from the definitions in locales; the package test
# checks the package with Debian's own checker and renders its manual pages; the Trash is listed
# through GIO's trash:/// on a private session bus, as a file manager lists it; appstreamcli checks
# the AppStream metainfo.
TEST_PACKAGES  := xvfb xdotool imagemagick tesseract-ocr tesseract-ocr-eng fonts-dejavu-core \
                  locales lintian man-db dbus gvfs libglib2.0-bin appstream
# Building the Debian packages and testing them as Debian does.
PACKAGE_PACKAGES := debhelper dpkg-dev lintian autopkgtest
BENCH_PACKAGES := libbenchmark-dev libpugixml-dev libxml2-dev libexpat1-dev
FUZZ_PACKAGES  := clang libclang-rt-14-dev

# Seconds each fuzz target runs in `make fuzz`; seeds come from the conformance corpus.
FUZZ_SECONDS ?= 60
FUZZ_SEEDS   ?= ../shared/xmlconf

# Quiet but for the project's own notices ("-- Kestrail: ..."); when it fails, everything it said
# is shown.
CMAKE_CONFIGURE = out=$$(cmake -S . -B $(1) -DCMAKE_BUILD_TYPE=$(2) $(3) 2>&1) || { printf '%s\n' "$$out"; exit 1; }; \
                  printf '%s\n' "$$out" | grep '^-- Kestrail: ' || true
CTEST = scripts/run-tests $(1) $(JOBS)

.PHONY: all deps build-deps test-deps package-deps build check test asan install package demo \
        bench bench-deps fuzz clean

all: build

# Every package that building and testing need.
deps: build-deps test-deps package-deps

build-deps:
	@scripts/install-packages $(BUILD_PACKAGES)

test-deps:
	@scripts/install-packages $(TEST_PACKAGES)

package-deps: build-deps
	@scripts/install-packages $(PACKAGE_PACKAGES)

build: build-deps
	$(call CMAKE_CONFIGURE,$(BUILD),RelWithDebInfo)
	cmake --build $(BUILD) -j $(JOBS)

test: build test-deps package-deps
	$(call CTEST,$(BUILD))

asan: deps
	$(call CMAKE_CONFIGURE,$(ASAN_BUILD),Debug,-DKESTRAIL_SANITIZE=ON)
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	$(call CTEST,$(ASAN_BUILD))

check: test asan

install: build
	DESTDIR=$(DESTDIR) cmake --install $(BUILD) --prefix $(PREFIX) --strip

# The Debian packages, source and binary, built from debian/ by dpkg-buildpackage in a copy of
# the project: they land in $(BUILD)/package/, and the .deb's path is said at the end.
package: package-deps
	@changes=$$(scripts/make-package $(BUILD)/package) && \
	  echo "The package: $$(dirname $$changes)/$$(sed -n 's/^ [0-9a-f]* [0-9]* [a-z]* [a-z]* \(kestrail_.*\.deb\)$$/\1/p' $$changes | head -n1)"

demo: build
	@scripts/demo $(BUILD)/bin/kestrail

bench-deps: build-deps
	@scripts/install-packages $(BENCH_PACKAGES)

bench: bench-deps
	$(call CMAKE_CONFIGURE,build-bench,Release,-DKESTRAIL_BENCH=ON -DKESTRAIL_TESTS=OFF)
	cmake --build build-bench -j $(JOBS) --target benchmarks kestrail
	cmake --build build-bench --target run-benchmarks
	@bench/import.sh build-bench/bin/kestrail

fuzz: build-deps
	@scripts/install-packages $(FUZZ_PACKAGES)
	export CC=clang CXX=clang++ && $(call CMAKE_CONFIGURE,build-fuzz,RelWithDebInfo,-DKESTRAIL_FUZZ=ON -DKESTRAIL_TESTS=OFF)
	cmake --build build-fuzz -j $(JOBS) --target fuzzers
	@scripts/run-fuzzers build-fuzz/fuzz $(FUZZ_SECONDS) $(FUZZ_SEEDS)

clean:
	rm -rf $(BUILD) $(ASAN_BUILD) build-bench build-fuzz
