#pragma once

int floor_height();
