# The two commands of a newcomer: `make run` and `make test`.
BUILD ?= build
SANITIZE_BUILD ?= build-sanitize
FUZZ_BUILD ?= build-fuzz
FUZZ_SECONDS ?= 60
CMAKE_FLAGS ?=

.PHONY: all deps configure build run sim test check sanitize fuzz bench format clean

all: build

deps:
	@bash scripts/install-deps.sh

$(BUILD)/build.ninja: CMakeLists.txt
	cmake -S . -B $(BUILD) -G Ninja -DCMAKE_BUILD_TYPE=Release $(CMAKE_FLAGS)

configure: deps $(BUILD)/build.ninja

build: configure
	cmake --build $(BUILD)

# The panel keeps its files (TORV_NET.cfg, All_data.txt) in the folder it runs in.
run: build
	mkdir -p $(BUILD)/run && cd $(BUILD)/run && ../src/app/torv-panel --simulate

sim: build
	$(BUILD)/sim/torv-sim --port 8080

test: build
	cd $(BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure --timeout 120 -j2

sanitize: deps
	cmake --preset sanitize
	cmake --build --preset sanitize
	cd $(SANITIZE_BUILD) && QT_QPA_PLATFORM=offscreen ctest --output-on-failure --timeout 300 -j2

# Every libFuzzer target for FUZZ_SECONDS each, two at a time, then a table (clang, own build).
fuzz:
	@bash scripts/install-deps.sh --fuzz
	cmake --preset fuzz
	cmake --build $(FUZZ_BUILD) --target fuzz_all
	FUZZ_SECONDS=$(FUZZ_SECONDS) FUZZ_BUILD=$(CURDIR)/$(FUZZ_BUILD) bash scripts/fuzz.sh

bench: build
	@for b in $(BUILD)/bench/*; do [ -x "$$b" ] && [ -f "$$b" ] && "$$b"; done; true

# House rules: includes point down the layers; every tracked source is formatted.
check:
	bash scripts/check-layers.sh
	git ls-files '*.cpp' '*.h' | xargs clang-format --dry-run -Werror
	@echo "format: every source is formatted"

format:
	git ls-files '*.cpp' '*.h' | xargs clang-format -i

clean:
	rm -rf $(BUILD) $(SANITIZE_BUILD) $(FUZZ_BUILD)
