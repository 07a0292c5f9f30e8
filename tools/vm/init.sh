#!/bin/busybox sh
# PID 1 of the binder VM. Loads the driver, builds a writable view of the host's root filesystem,
# runs the job the host prepared in /job and powers off. Nothing here may exit: if PID 1 dies the
# kernel panics, which only ends the run (panic=-1 and -no-reboot) without an exit status.

PATH=/bin
export PATH

mount -t devtmpfs dev /dev
exec </dev/console >/dev/console 2>&1
mount -t proc proc /proc
mount -t sysfs sys /sys

fail() {
    echo "tps-vm: $*"
    poweroff -f
    sleep 10
}

while read -r mod; do
    insmod "/modules/$mod.ko" || fail "insmod $mod failed"
done </modules/order
insmod /modules/binder_linux.ko devices=binder,hwbinder,vndbinder || fail "insmod binder_linux failed"

ninep=trans=virtio,version=9p2000.L,msize=262144
mount -t 9p -o "$ninep" job /job || fail "cannot mount the job folder"
. /job/vm.conf
mount -t 9p -o "$ninep,ro,cache=loose" host /lower || fail "cannot mount the host root"
mount -t tmpfs -o mode=0755 upper /upper
mkdir -p /upper/data /upper/work
mount -t overlay -o lowerdir=/lower,upperdir=/upper/data,workdir=/upper/work overlay /root ||
    fail "cannot mount the overlay root"

mount -t proc proc /root/proc
mount -t sysfs sys /root/sys
mount -t debugfs debugfs /root/sys/kernel/debug
mount -t devtmpfs dev /root/dev
mkdir -p /root/dev/pts /root/dev/shm
mount -t devpts devpts /root/dev/pts
mount -t tmpfs shm /root/dev/shm
for class in backlight leds; do
    [ -d "/root/sys/class/$class" ] && mount -t tmpfs "$class" "/root/sys/class/$class"
done
mkdir -p /root/run/tps-vm /root/odm /root/vendor /root/data
mount -o bind /job /root/run/tps-vm
i=0
for dir in $TPS_VM_RW_DIRS; do
    mkdir -p "/root$dir"
    mount -t 9p -o "$ninep" "rw$i" "/root$dir" || fail "cannot mount $dir"
    i=$((i + 1))
done

for tty in /dev/ttyS1 /dev/ttyS2; do
    stty -F "$tty" raw -echo 115200
done

# Uptime stamps let the host tell boot time from command time.
read -r up _ </proc/uptime
echo "start $up" >/job/times
chroot /root /usr/bin/env -i /bin/sh /run/tps-vm/job.sh </dev/null >/dev/ttyS1 2>/dev/ttyS2
status=$?
read -r up _ </proc/uptime
echo "end $up" >>/job/times

# Leftover daemons of the job would keep the output ports open; the last close of a serial port waits
# until its buffer has gone out, so close them only once nothing else holds them.
kill -9 -1 2>/dev/null
sleep 0.1
: >/dev/ttyS1
: >/dev/ttyS2
echo "$status" >/job/status
poweroff -f
sleep 10
