#include "modMain.h"

int main(int argc, char **argv)
{
    return Main(argc, argv);
}
