#include "Gateway.h"

int main(int argc, char** argv)
{
    Gateway oGateway;
    return oGateway.Start(argc, argv);
}
