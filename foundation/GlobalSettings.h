#pragma once

struct GlobalSettings
{
};
