/* Takes the machine to the desired state in a file, and tells what is done. C99 or C++, linked with the import library.
 *
 *     apply_state FILE            applies it; Ctrl+C cancels and undoes
 *     apply_state FILE --check    shows what would be done
 *
 * The exit codes are those of zelkctl. */
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <zelk_state/zelk_state.h>

static volatile sig_atomic_t interrupted = 0;

static void note_interrupt(int signal_number)
{
    (void)signal_number;
    interrupted = 1;
}

/* Called with every event, and several times a second with none. */
static int ZELK_STATE_CALL show_progress(void* context, const char* event)
{
    if (event != NULL)
        fprintf((FILE*)context, "%s\n", event);
    return interrupted;
}

static char* read_file(const char* name)
{
    FILE* const file = fopen(name, "rb");
    char* text = NULL;
    long size = 0;
    if (file == NULL)
        return NULL;
    if (fseek(file, 0, SEEK_END) == 0 && (size = ftell(file)) >= 0 && fseek(file, 0, SEEK_SET) == 0)
        text = (char*)calloc((size_t)size + 1, 1);
    if (text != NULL && fread(text, 1, (size_t)size, file) != (size_t)size)
    {
        free(text);
        text = NULL;
    }
    fclose(file);
    return text;
}

int main(int count, char** arguments)
{
    char* result = NULL;
    char* error = NULL;
    char* const desired = count > 1 ? read_file(arguments[1]) : NULL;
    int code;
    if (desired == NULL)
        return fputs("usage: apply_state FILE [--check]\n", stderr), ZELK_STATE_USAGE;
    signal(SIGINT, note_interrupt);
    if (count > 2 && strcmp(arguments[2], "--check") == 0)
        code = zelk_state_plan(desired, NULL, &result, &error);
    else
        code = zelk_state_apply(desired, "{\"timeout\": 15}", show_progress, stderr, &result, &error);
    puts(result != NULL ? result : error);
    zelk_state_free(result);
    zelk_state_free(error);
    free(desired);
    return code;
}
