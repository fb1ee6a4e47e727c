#!/usr/bin/env bash
# guest.sh COMMAND...: runs a command of this machine in a guest: the Linux kernel as a process (user-mode-linux), with
# the VLANs, VRFs and bonds that this machine's own kernel may lack. The file system is this machine's, read-only, but for
# a /run of the guest's own. Prints the command's output and exits with its result; 77: there is no guest.
set -euo pipefail

command -v linux.uml >/dev/null && [ -d /usr/lib/uml/modules ] || { echo "user-mode-linux is not installed"; exit 77; }
work=$(mktemp -d)
guest=
finish() {
    [ -z "$guest" ] || kill "$guest" 2>/dev/null || true
    rm -rf "$work"
}
trap finish EXIT
mkdir "$work/out"

cat >"$work/init" <<'INIT'
#!/bin/sh
export PATH=/usr/sbin:/usr/bin:/sbin:/bin
mount -t proc proc /proc
mount -t sysfs sys /sys
mount -t tmpfs tmp /run
for argument in $(cat /proc/cmdline); do case $argument in out=*) eval "$argument" ;; esac; done
mkdir -p /run/modules/lib
ln -s /usr/lib/uml/modules /run/modules/lib/modules
modprobe -d /run/modules -a 8021q vrf bonding dummy bridge veth
mount -t hostfs none -o "$out" /mnt
export TMPDIR=/run
ip link set lo up
cd /mnt
sh ./job >log 2>&1
echo $? >result
cd /
umount /mnt
echo o >/proc/sysrq-trigger
sleep 10
INIT
chmod +x "$work/init"
printf '%q ' exec env UVEL_GUEST=1 "$@" >"$work/out/job"

linux.uml rootfstype=hostfs rootflags=/ ro init="$work/init" mem=512M con=null con0=null,fd:1 con1=null quiet \
    uml_dir="$work/" umid=guest out="$work/out" >"$work/console" 2>&1 </dev/null &
guest=$!
wait "$guest" || true
guest=
cat "$work/out/log" 2>/dev/null || true
[ -s "$work/out/result" ] || { echo "the guest ended without a result:"; tail -20 "$work/console"; exit 1; }
exit "$(cat "$work/out/result")"
