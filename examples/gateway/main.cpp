#include "Gateway.h"

int main(int argc, char** argv)
{
    return Gateway().Start(argc, argv);
}
