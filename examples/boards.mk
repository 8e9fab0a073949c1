# Boards side by side with GNU make:
#   make -f boards.mk -j8 -k FILE=app.hex DEVICE=VT-B128
# boards.txt names a board and its port a line. -k lets the others go on when one fails; the exit code
# is 0 when all are good.
BOARDS ?= boards.txt
OUT ?= results
HERE := $(dir $(realpath $(lastword $(MAKEFILE_LIST))))
NAMES := $(shell cut -d' ' -f1 $(BOARDS))
export FILE DEVICE OUT CALVORIN

all: $(NAMES)
$(NAMES):
	@$(HERE)board.sh $@ "$$(awk -v name=$@ '$$1 == name { print $$2 }' $(BOARDS))"
.PHONY: all $(NAMES)
