# shellcheck shell=bash
# To be sourced. Windows writes registry keys for every adapter that it installs; Wine writes none. wine_adapters_register
# plays the installer for this machine's links, in the prefix of the environment. With nothing new it takes milliseconds.

wine_adapters_registry() {
    local net='{4D36E972-E325-11CE-BFC1-08002BE10318}' lan='{AD498944-762F-11D0-8DCB-00C04FC3358C}'
    local control='HKEY_LOCAL_MACHINE\SYSTEM\CurrentControlSet\Control' link name index guid device driver
    printf 'REGEDIT4\n'
    # Links of earlier runs go; only this file's keys stand in this prefix.
    printf '\n[-%s]\n' "$control\\Class\\$net" "$control\\Network\\$net" "$control\\DeviceClasses\\$lan"
    for link in /sys/class/net/*/ifindex; do
        [ -r "$link" ] || continue
        index=$(<"$link")
        link=${link%/ifindex}
        name=${link##*/}
        [ "$name" != lo ] || continue
        driver=$(basename -- "$(readlink -f "$link/device/driver" 2>/dev/null || echo virtual)")
        guid=$(printf '{%08X-0000-0000-0000-4E6574446576}' "$index")
        device=$(printf 'ROOT\\\\NET\\\\%04d' "$index")
        printf '\n[%s\\%04d]\n"NetCfgInstanceId"="%s"\n"DriverDesc"="Linux %s adapter"\n"DeviceInstanceID"="%s"\n' \
            "$control\\Class\\$net" "$index" "$guid" "$driver" "$device"
        printf '\n[%s\\Connection]\n"Name"="%s"\n"PnpInstanceID"="%s"\n' "$control\\Network\\$net\\$guid" "$name" "$device"
        printf '\n[%s\\##?#%04d]\n"DeviceInstance"="%s"\n' "$control\\DeviceClasses\\$lan" "$index" "$device"
    done
}

wine_adapters_register() {
    local file=$WINEPREFIX/adapters.reg
    wine_adapters_registry >"$file.new"
    if cmp -s "$file.new" "$file"; then
        rm -f "$file.new"
        return
    fi
    if timeout -k 5 60 "$WINELOADER" regedit /S "Z:$file.new" </dev/null >/dev/null 2>&1; then
        mv "$file.new" "$file"
    else
        echo "the adapters could not be registered: their records will not be complete" >&2
    fi
}
