#!/usr/bin/env bash
# sftp.sh PREFIX: serves files by SFTP as OpenSSH for Windows does: the drive C of the Wine prefix is the folder /C:.
# The mounts are this process's alone and end with it.
set -euo pipefail
if [ "${2:-}" != inside ]; then
    exec unshare --mount -- "$0" "$1" inside
fi
root=$1/../sftp # a place to mount on
mkdir -p -- "$root"
mount -t tmpfs none "$root"
for folder in usr etc dev; do
    mkdir "$root/$folder"
    mount --rbind "/$folder" "$root/$folder"
done
for folder in bin lib lib64; do
    cp -a "/$folder" "$root" # links into /usr
done
for drive in C: c:; do
    mkdir "$root/$drive"
    mount --bind "$1/drive_c" "$root/$drive"
done
exec chroot "$root" /usr/lib/openssh/sftp-server -d /C:/users/root
