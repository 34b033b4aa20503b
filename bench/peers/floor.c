/* The floor: what a gate costs when nothing stands between the program and the operating system.
 *
 * usage: floor PORT CARDS
 *
 * Waits in poll, reads, cuts lines at the carriage return, looks the card up in a sorted table of the file
 * CARDS (one card a line) and writes the open or the refuse command. Prints "ready" when the port is open. */

#define _DEFAULT_SOURCE

#include <fcntl.h>
#include <poll.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <termios.h>
#include <unistd.h>

enum { MAX_CARDS = 1000000, CARD_SIZE = 16, LINE_SIZE = 64 };

struct cards {
    char (*text)[CARD_SIZE];
    size_t count;
};

static int compare(const void* first, const void* second)
{
    return strcmp(first, second);
}

static struct cards load(const char* path)
{
    struct cards cards = {malloc((size_t)MAX_CARDS * CARD_SIZE), 0};
    FILE* file = fopen(path, "r");
    if (file == NULL || cards.text == NULL) {
        perror(path);
        exit(1);
    }
    while (cards.count < MAX_CARDS && fscanf(file, "%15s", cards.text[cards.count]) == 1) {
        ++cards.count;
    }
    fclose(file);
    qsort(cards.text, cards.count, CARD_SIZE, compare);
    return cards;
}

static int open_port(const char* path)
{
    struct termios settings;
    const int port = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (port < 0 || tcgetattr(port, &settings) != 0) {
        perror(path);
        exit(1);
    }
    cfmakeraw(&settings);
    cfsetspeed(&settings, B9600);
    tcsetattr(port, TCSANOW, &settings);
    return port;
}

/* line: "$01AR12345678", without the carriage return */
static void decide(int port, const struct cards* cards, const char* line)
{
    char command[16];
    unsigned sum;
    int size;

    if (strlen(line) < 6 || line[0] != '$' || line[4] != 'R') {
        return;
    }
    const int allowed = bsearch(line + 5, cards->text, cards->count, CARD_SIZE, compare) != NULL;
    memcpy(command, line, 4);
    memcpy(command + 4, allowed ? "103" : "000", 3);
    sum = (unsigned char)command[0];
    sum ^= (unsigned)(command[1] - '0') * 10 + (unsigned)(command[2] - '0');
    sum ^= (unsigned char)command[3];
    for (int i = 4; i < 7; ++i) {
        sum ^= (unsigned)(command[i] - '0');
    }
    size = 7 + snprintf(command + 7, sizeof command - 7, "%02X\r", sum & 0xFFU);
    if (write(port, command, (size_t)size) != size) {
        perror("write");
        exit(1);
    }
}

int main(int argc, char** argv)
{
    char line[LINE_SIZE];
    size_t length = 0;

    if (argc != 3) {
        fprintf(stderr, "usage: %s PORT CARDS\n", argv[0]);
        return 2;
    }
    const struct cards cards = load(argv[2]);
    const int port = open_port(argv[1]);
    puts("ready");
    fflush(stdout);

    for (;;) {
        char bytes[4096];
        struct pollfd wait = {port, POLLIN, 0};
        if (poll(&wait, 1, -1) < 0 || (wait.revents & (POLLERR | POLLHUP)) != 0) {
            return 0;
        }
        const ssize_t count = read(port, bytes, sizeof bytes);
        for (ssize_t i = 0; i < count; ++i) {
            if (bytes[i] == '\r') {
                line[length] = '\0';
                decide(port, &cards, line);
                length = 0;
            } else if (length + 1 < sizeof line) {
                line[length++] = bytes[i];
            }
        }
    }
}
