-- Shared by the tests: requests as they reach the database through PostgREST. Each test includes this
-- inside its transaction, which is rolled back.
\set ON_ERROR_STOP 1
SET client_min_messages = warning;
SET search_path = public, tap;

-- Runs a statement as a request of the given method and path does; its rows come back as JSON.
CREATE FUNCTION pg_temp.request(method text, statement text, path text) RETURNS json
    LANGUAGE plpgsql AS $$
DECLARE
    answer json;
BEGIN
    PERFORM set_config('request.method', method, true), set_config('request.path', path, true),
        set_config('search_path', 'public', true), set_config('role', 'anon', true);
    IF statement LIKE 'EXPLAIN%' THEN
        EXECUTE statement;
    ELSE
        EXECUTE format('WITH source AS (%s) SELECT coalesce(json_agg(source), ''[]'') FROM source', statement) INTO answer;
    END IF;
    PERFORM set_config('role', 'none', true), set_config('request.method', '', true),
        set_config('search_path', 'public, tap', true);
    RETURN answer;
END
$$;

-- POST /rest/v1/NAME?on_conflict=CONFLICT with `Prefer: resolution=merge-duplicates`.
CREATE FUNCTION pg_temp.upsert(name text, conflict text, body json) RETURNS json
    LANGUAGE plpgsql AS $$
DECLARE
    columns text;
    setting text;
BEGIN
    SELECT string_agg(format('%I', key), ', '), string_agg(format('%1$I = EXCLUDED.%1$I', key), ', ')
    INTO columns, setting
    FROM json_object_keys(body) AS key;
    RETURN pg_temp.request('POST', format(
        'INSERT INTO public.%1$I (%2$s) SELECT %2$s FROM json_populate_record(NULL::public.%1$I, %3$L) '
        'ON CONFLICT (%4$s) DO UPDATE SET %5$s RETURNING 1 AS written', name, columns, body, conflict, setting),
        '/rest/v1/' || name);
END
$$;

-- The five rows of a client, each with the conflict target that it sends.
CREATE FUNCTION pg_temp.day_row(email text, device text, day text, count bigint) RETURNS json
    LANGUAGE sql AS $$
    SELECT pg_temp.upsert('device_day_counts', 'customer_email,device_id,day', json_build_object(
        'customer_email', $1, 'device_id', $2, 'day', $3, 'count', $4, 'updated_at', '2026-03-05T14:07:09Z'))
$$;
CREATE FUNCTION pg_temp.hour_row(email text, device text, day text, hour integer, count bigint) RETURNS json
    LANGUAGE sql AS $$
    SELECT pg_temp.upsert('device_hour_counts', 'customer_email,device_id,day,hour', json_build_object(
        'customer_email', $1, 'device_id', $2, 'day', $3, 'hour', $4, 'count', $5,
        'updated_at', '2026-03-05T14:07:09Z'))
$$;
CREATE FUNCTION pg_temp.app_row(email text, device text, day text, hour integer, bundle text, count bigint) RETURNS json
    LANGUAGE sql AS $$
    SELECT pg_temp.upsert('device_app_hour_counts', 'customer_email,device_id,day,hour,bundle_id',
        json_build_object('customer_email', $1, 'device_id', $2, 'day', $3, 'hour', $4, 'bundle_id', $5,
                          'count', $6, 'updated_at', '2026-03-05T14:07:09Z'))
$$;
CREATE FUNCTION pg_temp.registry_row(email text, bundle text, name text, hidden boolean) RETURNS json
    LANGUAGE sql AS $$
    SELECT pg_temp.upsert('device_app_registry', 'customer_email,bundle_id', json_build_object(
        'customer_email', $1, 'bundle_id', $2, 'app_name', $3, 'is_hidden', $4,
        'updated_at', '2026-03-05T14:07:09Z'))
$$;
CREATE FUNCTION pg_temp.device(email text, device text, name text, seen text) RETURNS json
    LANGUAGE sql AS $$
    SELECT pg_temp.upsert('devices', 'customer_email,device_id', json_build_object(
        'customer_email', $1, 'device_id', $2, 'device_name', $3, 'last_seen_at', $4))
$$;

-- POST /rest/v1/rpc/CALL
CREATE FUNCTION pg_temp.rpc(call text) RETURNS jsonb
    LANGUAGE sql AS $$ SELECT pg_temp.request('POST', format('SELECT * FROM public.%s', $1), '/rpc/call')::jsonb $$;
