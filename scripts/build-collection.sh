#!/usr/bin/env bash
# build-collection.sh FOLDER VERSION ZELKCTL LIBRARY: makes the Ansible collection, with what it carries, as an archive in
# FOLDER, and unpacked below FOLDER/ansible_collections, where Ansible finds it. The same input gives the same archive.
set -euo pipefail
top=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")/.." && pwd -P)
folder=$1 version=$2 zelkctl=$3 library=$4
tree=$folder/ansible_collections/velmor/zelk
utils=$tree/plugins/plugin_utils

rm -rf -- "$folder"
mkdir -p -- "$tree/bin"
cp -R -- "$top/ansible/." "$tree"
find "$tree" -name __pycache__ -prune -exec rm -rf {} +
cp -- "$zelkctl" "$library" "$tree/bin"
(cd "$tree/bin" && sha256sum -- * >SHA256SUMS)
cp -- "$top/docs/desired-state.schema.json" "$top/cli/report/page.html" "$utils"
cp -- "$top/LICENSE" "$top/CHANGELOG.md" "$tree"
sed -i "s/^version: .*/version: $version/" "$tree/galaxy.yml"
find "$tree" -type d -exec chmod 755 {} + -o -type f -exec chmod 644 {} +

# Its own home: what a user has set for Ansible is no part of a build.
: >"$folder/ansible.cfg"
HOME=$folder ANSIBLE_HOME=$folder/.ansible ANSIBLE_CONFIG=$folder/ansible.cfg ansible-galaxy collection build --output-path "$folder" "$tree" >/dev/null
archive=$folder/velmor-zelk-$version.tar
gunzip "$archive.gz"
mkdir "$folder/again"
tar -xf "$archive" -C "$folder/again"
# The collection as it will be installed knows its version.
cp "$folder/again/MANIFEST.json" "$folder/again/FILES.json" "$tree"
tar -C "$folder/again" --sort=name --mtime="@${SOURCE_DATE_EPOCH:-0}" --owner=0 --group=0 --numeric-owner --format=gnu \
    -cf "$archive" -- $(cd "$folder/again" && ls -A)
gzip -n9 "$archive"
rm -rf -- "$folder/again" "$folder/.ansible" "$folder/ansible.cfg"
