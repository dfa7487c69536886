# The front door: `make demo` shows the application at work, `make check` builds and tests it.
# Build trees: build/ (optimised, with debug info) and build-asan/ (AddressSanitizer and
# UndefinedBehaviorSanitizer).

BUILD      ?= build
ASAN_BUILD ?= build-asan
JOBS       ?= $(shell nproc)

# Debian packages, by what needs them.
BUILD_PACKAGES := cmake make g++ pkg-config libgtest-dev libboost-dev

CMAKE_CONFIGURE = cmake -S . -B $(1) -DCMAKE_BUILD_TYPE=$(2) $(3) >/dev/null
CTEST = ctest --test-dir $(1) --output-on-failure -j $(JOBS)

.PHONY: all deps build check test asan clean

all: build

deps:
	@scripts/install-packages $(BUILD_PACKAGES)

build: deps
	$(call CMAKE_CONFIGURE,$(BUILD),RelWithDebInfo)
	cmake --build $(BUILD) -j $(JOBS)

test: build
	$(call CTEST,$(BUILD))

asan: deps
	$(call CMAKE_CONFIGURE,$(ASAN_BUILD),Debug,-DKESTRAIL_SANITIZE=ON)
	cmake --build $(ASAN_BUILD) -j $(JOBS)
	$(call CTEST,$(ASAN_BUILD))

check: test asan

clean:
	rm -rf $(BUILD) $(ASAN_BUILD)
