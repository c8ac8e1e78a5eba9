# Sourced by the QEMU tests: fails, naming what is missing, when QEMU, a
# kernel image, the harness or Python isn't there (a run that checks nothing
# must not pass), then points the harness's cache at CACHE.
# Usage: source vm-prerequisites.sh HARNESS_DIR CACHE_DIR [MORE_MISSING...]
vm_missing=("${@:3}")
command -v qemu-system-x86_64 >/dev/null || vm_missing+=("qemu-system-x86_64 (Debian package qemu-system-x86)")
ls /boot/vmlinuz-* >/dev/null 2>&1 || vm_missing+=("a kernel image in /boot (linux-image-amd64)")
[ -f "$1/run-in-vm.sh" ] || vm_missing+=("the qemu-usb harness at $1")
command -v python3 >/dev/null || vm_missing+=("python3")
if ((${#vm_missing[@]} > 0)); then
    printf 'missing: %s\n' "${vm_missing[@]}"
    echo "scripts/setup.sh --test installs what is missing"
    exit 1
fi
mkdir -p "$2"
export QEMU_USB_CACHE=$2
