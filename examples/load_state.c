/* Prints the machine as JSON. It needs neither the import library nor the header: only LoadLibrary and GetProcAddress.
 */
#include <stdio.h>

#include <windows.h>

typedef int(__cdecl* read_function)(const char* options, char** result, char** error);
typedef void(__cdecl* free_function)(char* text);
typedef void (*any_function)(void);

int main(void)
{
    const HMODULE library = LoadLibraryW(L"ZELK_STATE.DLL");
    const read_function read = library ? (read_function)(any_function)GetProcAddress(library, "zelk_state_read") : NULL;
    const free_function release =
        library ? (free_function)(any_function)GetProcAddress(library, "zelk_state_free") : NULL;
    char* result = NULL;
    char* error = NULL;
    int code;
    if (!read || !release)
        return fprintf(stderr, "ZELK_STATE.DLL cannot be loaded: error %lu\n", GetLastError()), 1;
    code = read("{\"identity\": false}", &result, &error);
    puts(result ? result : error);
    release(result);
    release(error);
    return code;
}
